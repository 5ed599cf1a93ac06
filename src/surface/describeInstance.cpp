// What a report says of the instance that failed.
#include "diagnostics/ErrorReport.h"
#include "diagnostics/words.h"
#include "surface/cPixSheet.h"

namespace pixkit {

void describeInstance(const cPixSheet& sheet, ErrorReport& report) {
    const auto add = [&](const char* name, const auto& value) { report.variables.push_back({name, inWords(value)}); };
    add("Width", sheet.m_Width);
    add("Height", sheet.m_Height);
    add("ImageType", sheet.m_Format);
    add("Alpha", sheet.m_AlphaImage);
    add("Handle", sheet.m_Handle);
    add("hDC", sheet.m_hDC);
    add("isInDC", sheet.m_prevDCobject != 0);
    add("ManageOwnDC", sheet.m_ManageDC);
    add("OrginalFormat", sheet.m_ImageByteCache);
    add("osCAP", sheet.m_osCAP);
    add("HighQualityInterpolation", sheet.m_StretchQuality);
    add("KeepGDIplusActive", sheet.m_KeepGDIplusActive);
    add("gdiToken", sheet.m_GDItoken);
    add("MaxPixels", sheet.m_limits.pixels);
    add("MaxMemory", sheet.m_limits.memory);
    report.isUnattended = sheet.m_isUnattended;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
