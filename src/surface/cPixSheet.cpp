// Lifecycle: creation, moving, destruction, selection into a device context, exchange.
#include "surface/cPixSheet.h"
#include "platform/system.h"
#include "surface/Capabilities.h"
#include "surface/HostAccess.h"
#include <cstring>
#include <memory>
#include <type_traits>
#include <utility>

namespace pixkit {

cPixSheet::cPixSheet() noexcept {
    static_assert(sizeof(SheetState) <= sizeof(m_state) && alignof(SheetState) <= alignof(cPixSheet));
    ::new (m_state) SheetState;
    state().m_osCAP = osCapabilities(platform::GetVersionExA());
    isGDIplusEnabled(true);
    if (isGDIplusEnabled()) state().m_StretchQuality = true;
}

cPixSheet::~cPixSheet() {
    state().pvDestroyDIB();
    std::destroy_at(&state());
}

cPixSheet::cPixSheet(cPixSheet&& other) noexcept : cPixSheet() {
    swap(*this, other);
}

cPixSheet& cPixSheet::operator=(cPixSheet&& other) noexcept {
    cPixSheet moved(std::move(other)); // which may be this one
    swap(*this, moved);
    return *this;
}

void swap(cPixSheet& first, cPixSheet& second) noexcept {
    static_assert(std::is_nothrow_move_constructible_v<SheetState> && std::is_nothrow_move_assignable_v<SheetState>);
    std::swap(HostAccess::state(first), HostAccess::state(second));
}

bool cPixSheet::InitializeDIB(std::int32_t Width, std::int32_t Height) noexcept {
    return HostAccess::outcome(*this, state().pvInitializeDIB(Width, Height));
}

void cPixSheet::DestroyDIB() noexcept {
    state().pvDestroyDIB();
    state().m_outcome.succeed();
}

void cPixSheet::EraseDIB() noexcept {
    state().m_outcome = doneIf(state().m_Handle != 0, noImage);
    if (state().m_Handle == 0) return;
    const PixelView pixels = HostAccess::pixels(*this);
    std::memset(pixels.bits, 0, pixels.stride * pixels.height);
    state().pvForgetFile();
    state().m_Format = imgNone;
    state().m_AlphaImage = AlphaSimple; // an all-transparent image counts as simple transparency
}

std::intptr_t cPixSheet::LoadDIBinDC(bool bLoad) noexcept {
    const std::intptr_t dc = state().pvLoadDIBinDC(bLoad);
    state().m_outcome = !bLoad || dc != 0 ? done() : refused(state().m_Handle == 0 ? noImage : noDeviceContext);
    return dc;
}

void cPixSheet::SwapDIBs(cPixSheet* SwapFromDIB) noexcept {
    state().m_outcome = doneIf(SwapFromDIB != nullptr, "there is no other object");
    if (SwapFromDIB != nullptr && SwapFromDIB != this) state().pvSwapDIBs(SwapFromDIB->state());
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
