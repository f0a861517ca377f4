// Lines of one pixel's width, as LineTo documents them, in the memory of an image.
#pragma once

#include <span>

#include "platform/linux/desktop_module.h"

// From the first point up to, but not including, the second one; only within the rectangles, which lie in the image.
// The ends may have any values.
void DrawThinLine(const PixelMemory& memory, std::span<const RECT> clip, POINT from, POINT to, DWORD pixel);

// The same, with three pixels drawn and three left out; these become `gap` unless it is null. `step` is where the
// pattern begins.
void DrawDottedLine(const PixelMemory& memory, std::span<const RECT> clip, POINT from, POINT to, DWORD pixel,
                    const DWORD* gap, unsigned step);

// The number of pixels of a line without limits.
ULONGLONG PixelsOfLine(POINT from, POINT to);
