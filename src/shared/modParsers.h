// The stateless helpers that readers, writers, effects and the surface share: everything named iparse... in one
// include. Rooms include the subjects that they use.
#pragma once
#include "shared/AlphaChannel.h"
#include "shared/Colors.h"
#include "shared/Files.h"
#include "shared/StdPictures.h"
#include "shared/cCDECL.h"
#include "shared/checked.h"
// SPDX-License-Identifier: MIT
