// Makes cPixSheet objects for COM.
#pragma once
#include "com/Automation.h"

namespace pixkit::com {

HRESULT createClassFactory(REFIID interfaceId, void** object) noexcept;

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
