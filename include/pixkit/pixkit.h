// The one header that programs include.
// Everything that a program needs: the class, what it is told of (messages, unexpected errors), what it may give
// (system pictures, fonts, resources, dropped files, a clipboard, GDI+), and how it frees what it gets (bitmaps,
// icons), looks at regions, and makes device contexts to draw on.
//
// What programs may call has PIXKIT_API; other declarations in these headers are for the library's own use, and in a
// shared library they are hidden.
#pragma once
#include "diagnostics/ErrorReport.h"
#include "platform/clipboard.h"
#include "platform/drops.h"
#include "platform/gdi.h"
#include "platform/gdiplus.h"
#include "platform/icons.h"
#include "platform/interaction.h"
#include "platform/pictures.h"
#include "platform/regions.h"
#include "platform/text.h"
#include "shared/resources.h"
#include "surface/cPixSheet.h"
// SPDX-License-Identifier: MIT
