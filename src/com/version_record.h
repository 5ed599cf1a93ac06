// The version record of a module, as its resources hold it.
#pragma once
#include <string>
#include <windows.h>

namespace pixkit::com {

// Major, minor and revision joined by points, such as "3.0.41"; empty when the module has no version record.
std::string versionText(HMODULE module);

} // namespace pixkit::com
