#include "platform/clipboard.h"
#include "platform/HandlerSlot.h"
#include "platform/SystemClipboard.h"
#include "platform/faults.h"
#include <algorithm>
#include <utility>

namespace pixkit::platform {

namespace {

HandlerSlot<ClipboardProvider> providerInUse;

std::shared_ptr<const ClipboardProvider> providerOrSystem() {
    if (auto provider = providerInUse.get()) return provider;
    auto system = systemClipboard();
    return system ? std::make_shared<const ClipboardProvider>(std::move(system)) : nullptr;
}

} // namespace

void setClipboardProvider(ClipboardProvider provider) {
    providerInUse.set(std::move(provider));
}

bool isSameFormat(std::string_view a, std::string_view b) noexcept {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::ranges::equal(a, b, {}, lower, lower);
}

std::vector<DroppedFile> contentsOnClipboard() {
    const auto provider = providerOrSystem();
    return provider && provider->contents ? provider->contents() : std::vector<DroppedFile>();
}

OpenClipboard::OpenClipboard() : m_provider(providerOrSystem()) {
    if (!m_provider) return;
    untilNotBusy([&] {
        m_isOpen = !faultDue(SeamCall::openClipboard) && m_provider->open();
        return m_isOpen;
    });
}

OpenClipboard::~OpenClipboard() {
    if (m_isOpen) m_provider->close();
}

std::vector<std::uint8_t> OpenClipboard::get(const std::string& format) const {
    if (faultDue(SeamCall::getClipboardData)) return {};
    return m_provider->get(format);
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
