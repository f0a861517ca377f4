// Lines wider than one pixel, in the memory of an image.
#pragma once

#include <span>

#include "platform/linux/desktop_module.h"

// Fills the pixels at a distance of half the width or less from the line between the points, both included; the left
// and the upper one of two pixels at exactly that distance. Only within the rectangles, which lie in the image. The
// ends may have any values.
void DrawWideLine(const PixelMemory& memory, std::span<const RECT> clip, POINT from, POINT to, int width, DWORD pixel);
