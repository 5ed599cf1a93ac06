// Resources of the program that uses the component.
#pragma once
#include "com/Automation.h"
#include "platform/pictures.h"
#include "shared/ByteArray.h"
#include <functional>
#include <memory>
#include <ocidl.h>

namespace pixkit::com {

// Fetches the bytes of resource `index` (a number or name) of the custom type `section` (a string) and hands them to
// `use`: from `host`, a global object with a function LoadResData that is called by name, or without one from the
// running program's own file. Returns what `use` says, or false when there is no such resource.
bool withResource(VARIANT& index, VARIANT& section, IDispatch* host, const std::function<bool(const ByteArray&)>& use);

// Whether `section` names a type of custom resources: it is a string. Otherwise it is the number of a kind of pictures.
bool isCustomResource(VARIANT& section);

// Fetches picture resource `index` of the kind `section` (0 bitmap, 1 icon, 2 cursor): from `host`, whose function
// LoadResPicture is called by name, or without one from the running program's own file, icons and cursors in the given
// size (0 = their own). Null when there is no such resource.
std::unique_ptr<platform::StdPicture> resourcePicture(VARIANT& index, VARIANT& section, IDispatch* host, int iconCx,
                                                      int iconCy);

// The system picture behind an object, whichever of its interfaces that is; null for null and other objects.
std::unique_ptr<platform::StdPicture> pictureOf(IUnknown* object);

// The object behind a picture that the platform made, as callers know it, with a reference of theirs. Null when it is
// not known as that.
IPictureDisp* pictureDispOf(const platform::StdPicture& picture);

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
