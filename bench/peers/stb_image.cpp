#define STB_IMAGE_IMPLEMENTATION
#define STBI_ONLY_PNG
#define STBI_ONLY_GIF
#define STBI_ONLY_TGA
#include <stb/stb_image.h>
// SPDX-License-Identifier: MIT
