// The component's one version record: the Version property, the command's --version and the Windows version
// resource all read it. Plain macros, because the resource compiler reads this file too.
#ifndef PIXKIT_SHARED_VERSION_H
#define PIXKIT_SHARED_VERSION_H

#define PIXKIT_VERSION_MAJOR 3
#define PIXKIT_VERSION_MINOR 0
#define PIXKIT_VERSION_REVISION 41

#define PIXKIT_TEXT_OF(number) #number
#define PIXKIT_JOINED(major, minor, revision)                                                                          \
    PIXKIT_TEXT_OF(major) "." PIXKIT_TEXT_OF(minor) "." PIXKIT_TEXT_OF(revision)
#define PIXKIT_FULL_VERSION PIXKIT_JOINED(PIXKIT_VERSION_MAJOR, PIXKIT_VERSION_MINOR, PIXKIT_VERSION_REVISION)

#endif
// SPDX-License-Identifier: MIT
