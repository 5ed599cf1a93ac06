// What readers, writers and renderers may do to their host beyond its public members.
#pragma once
#include "platform/gdi.h"
#include "platform/pictures.h"
#include "surface/SheetState.h"
#include <utility>

namespace pixkit {

struct ErrorReport;

struct HostAccess {
    static SheetState& state(cPixSheet& host) noexcept { return host.state(); }
    static const SheetState& state(const cPixSheet& host) noexcept { return host.state(); }
    // The bridge for one call: the one that the host keeps, else a new one; null where GDI+ is not enabled. May throw.
    static std::shared_ptr<cGDIPlus> GDIPlus(const cPixSheet& host) { return host.state().pvGDIplus(); }
    static void ImageType(cPixSheet& host, eImageFormat value) noexcept { host.state().m_Format = value; }
    static void SetOriginalFormat(cPixSheet& host, ByteArray inStream) noexcept {
        host.state().m_ImageByteCache = std::move(inStream);
    }
    static const Limits& limits(const cPixSheet& host) noexcept { return host.state().m_limits; }
    // What the host loads may be decoded to as few pixels as that (platform::OleLoadPicture).
    static platform::LeastSize leastSize(const cPixSheet& host) noexcept {
        return {host.state().m_leastWidth, host.state().m_leastHeight};
    }
    static void leastSize(cPixSheet& host, platform::LeastSize value) noexcept {
        host.state().m_leastWidth = value.width;
        host.state().m_leastHeight = value.height;
    }
    // 0, 0 in an image that was no cursor.
    static CursorHotspot hotspot(const cPixSheet& host) noexcept { return host.state().m_hotspot; }
    static void hotspot(cPixSheet& host, CursorHotspot value) noexcept { host.state().m_hotspot = value; }
    // What a load notes of its file, once the host has an image.
    static PictureNotes& notes(cPixSheet& host) noexcept { return host.state().m_notes; }
    // All that is said of the source's file goes for the host, too: its picture is made of the same.
    static void takeNotes(cPixSheet& host, const cPixSheet& source) noexcept {
        host.state().pvTakeNotes(source.state());
    }
    // Null where the file said nothing.
    static const std::shared_ptr<const PngProperties>& loadedProperties(const cPixSheet& host) noexcept {
        return host.state().m_PNGprops.loaded();
    }
    static void loadedProperties(cPixSheet& host, std::shared_ptr<const PngProperties> value) noexcept {
        host.state().m_PNGprops.loaded(std::move(value));
    }
    // The pixels of the host; an empty view when it holds no image. What was drawn on them, through whatever device
    // context, has arrived: the system puts drawing off. Programs that draw afterwards and go on using the view flush
    // themselves.
    static PixelView pixels(cPixSheet& host) noexcept { return host.state().pvPixels(true); }
    static ConstPixelView pixels(const cPixSheet& host) noexcept { return host.state().pvPixels(true); }
    // For a pixel alone, of which callers ask for millions: waits only for what was drawn through the instance's own
    // device context, while it holds the image.
    static PixelView pixelsForOne(cPixSheet& host) noexcept {
        return host.state().pvPixels(host.state().m_prevDCobject != 0);
    }
    static ConstPixelView pixelsForOne(const cPixSheet& host) noexcept {
        return host.state().pvPixels(host.state().m_prevDCobject != 0);
    }
    // How the last call of the host ended (LastErrorText); `attempt` keeps it (surface/attempt.h).
    static const Outcome& outcome(const cPixSheet& host) noexcept { return host.state().m_outcome; }
    static bool outcome(const cPixSheet& host, Outcome&& value) noexcept {
        host.state().m_outcome = std::move(value);
        return static_cast<bool>(host.state().m_outcome);
    }
    // As the member, but of no effect on LastErrorText: for hosts that are drawn on by others.
    static std::intptr_t LoadDIBinDC(cPixSheet& host, bool bLoad) noexcept { return host.state().pvLoadDIBinDC(bLoad); }
    // `drawn` is drawn by the same means as `like` from now on, and as Unattended; how it interpolates is its own.
    static void drawLike(cPixSheet& drawn, const cPixSheet& like) noexcept {
        drawn.state().m_osCAP = like.state().m_osCAP;
        drawn.state().m_GDItoken = like.state().m_GDItoken;
        drawn.state().m_isUnattended = like.state().m_isUnattended;
        drawn.state().pvJoinGDIplus();
    }
    // For tests of what is drawn how on systems that are not at hand; being inline, it is in no program that does not
    // ask.
    static void osCAP(cPixSheet& host, std::uint32_t flags) noexcept { host.state().m_osCAP = flags; }
    static std::uint32_t osCAP(const cPixSheet& host) noexcept { return host.state().m_osCAP; }
};

// Adds the instance's variables to a report (describeInstance.cpp).
void describeInstance(const cPixSheet& sheet, ErrorReport& report);

} // namespace pixkit
// SPDX-License-Identifier: MIT
