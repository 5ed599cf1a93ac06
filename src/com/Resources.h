// Custom resources of the program that uses the component.
#pragma once
#include "com/Automation.h"
#include "shared/ByteArray.h"
#include <functional>

namespace pixkit::com {

// Fetches the bytes of resource `index` (a number or name) of the custom type `section` (a string) and hands them to
// `use`: from `host`, a global object with a function LoadResData that is called by name, or without one from the
// running program's own file. Returns what `use` says, or false when there is no such resource.
bool withResource(VARIANT& index, VARIANT& section, IDispatch* host, const std::function<bool(const ByteArray&)>& use);

} // namespace pixkit::com
