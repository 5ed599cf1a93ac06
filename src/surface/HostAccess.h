// What readers, writers and renderers may do to their host beyond its public members.
#pragma once
#include "shared/PixelView.h"
#include "surface/cPixSheet.h"
#include <utility>

namespace pixkit {

struct HostAccess {
    static void ImageType(cPixSheet& host, eImageFormat value) noexcept { host.m_Format = value; }
    static void SetOriginalFormat(cPixSheet& host, ByteArray inStream) noexcept {
        host.m_ImageByteCache = std::move(inStream);
    }
    // 0, 0 in an image that was no cursor.
    static CursorHotspot hotspot(const cPixSheet& host) noexcept { return host.m_hotspot; }
    static void hotspot(cPixSheet& host, CursorHotspot value) noexcept { host.m_hotspot = value; }
    // The pixels of the host; an empty view when it holds no image.
    static PixelView pixels(cPixSheet& host) noexcept { return view(host); }
    static ConstPixelView pixels(const cPixSheet& host) noexcept { return view(host); }
    // How the last call of the host ended (LastErrorText); `attempt` keeps it (surface/attempt.h).
    static const Outcome& outcome(const cPixSheet& host) noexcept { return host.m_outcome; }
    static bool outcome(const cPixSheet& host, Outcome&& value) noexcept {
        host.m_outcome = std::move(value);
        return static_cast<bool>(host.m_outcome);
    }
    // As the member, but of no effect on LastErrorText: for hosts that are drawn on by others.
    static std::intptr_t LoadDIBinDC(cPixSheet& host, bool bLoad) noexcept { return host.pvLoadDIBinDC(bLoad); }
    // For tests of what is drawn how on systems that are not at hand; being inline, it is in no program that does not
    // ask.
    static void osCAP(cPixSheet& host, std::uint32_t flags) noexcept { host.m_osCAP = flags; }
    static std::uint32_t osCAP(const cPixSheet& host) noexcept { return host.m_osCAP; }

  private:
    static PixelView view(const cPixSheet& host) noexcept {
        if (host.m_Pointer == nullptr) return {};
        const auto width = static_cast<std::size_t>(host.m_Width);
        return {host.m_Pointer, width, static_cast<std::size_t>(host.m_Height), width * 4};
    }
};

} // namespace pixkit
