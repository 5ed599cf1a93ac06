// What the menu, the keys and the window call the viewer's commands. Read by the resource compiler too.
#pragma once

#define VIEWER_RESOURCES 1

#define COMMAND_OPEN 101
#define COMMAND_SAVE 102
#define COMMAND_NEXT 103
#define COMMAND_PREVIOUS 104
#define COMMAND_EXIT 105
#define COMMAND_COPY 201
#define COMMAND_PASTE 202
#define COMMAND_ZOOM_IN 301
#define COMMAND_ZOOM_OUT 302
#define COMMAND_ACTUAL_SIZE 303
#define COMMAND_FIT 304
#define COMMAND_LEFT 311
#define COMMAND_RIGHT 312
#define COMMAND_UP 313
#define COMMAND_DOWN 314
#define COMMAND_TURN_RIGHT 401
#define COMMAND_TURN_LEFT 402
#define COMMAND_TILT_RIGHT 403
#define COMMAND_TILT_LEFT 404
#define COMMAND_MIRROR_ACROSS 405
#define COMMAND_MIRROR_DOWN 406
#define COMMAND_GRAYSCALE 407
#define COMMAND_SHAPE 501
#define COMMAND_HELP 601
// SPDX-License-Identifier: MIT
