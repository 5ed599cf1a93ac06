// What a report says of the instance that failed.
#include "diagnostics/ErrorReport.h"
#include "diagnostics/words.h"
#include "surface/HostAccess.h"

namespace pixkit {

void describeInstance(const cPixSheet& sheet, ErrorReport& report) {
    const SheetState& state = HostAccess::state(sheet);
    const auto add = [&](const char* name, const auto& value) { report.variables.push_back({name, inWords(value)}); };
    add("Width", state.m_Width);
    add("Height", state.m_Height);
    add("ImageType", state.m_Format);
    add("Alpha", state.m_AlphaImage);
    add("Handle", state.m_Handle);
    add("hDC", state.m_hDC);
    add("isInDC", state.m_prevDCobject != 0);
    add("ManageOwnDC", state.m_ManageDC);
    add("OrginalFormat", state.m_ImageByteCache);
    add("osCAP", state.m_osCAP);
    add("HighQualityInterpolation", state.m_StretchQuality);
    add("KeepGDIplusActive", state.m_KeepGDIplusActive);
    add("gdiToken", state.m_GDItoken);
    add("MaxPixels", state.m_limits.pixels);
    add("MaxMemory", state.m_limits.memory);
    report.isUnattended = state.m_isUnattended;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
