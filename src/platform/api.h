// What a shared library shows of itself. All else in it is hidden: what is declared without this is for the library's
// own use, in whatever header it stands.
#pragma once

#ifdef __ELF__
#define PIXKIT_API __attribute__((visibility("default")))
#else
#define PIXKIT_API // the library is a static one
#endif
// SPDX-License-Identifier: MIT
