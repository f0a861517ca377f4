#include "platform/linux/thin_line.h"

#include <algorithm>
#include <cstdlib>

namespace {

constexpr unsigned kDot = 3;

// The coordinates of a line along its longer direction, of which it has one pixel each, and across it.
struct Steps {
  LONGLONG along, across;      // of the first point
  LONGLONG count;              // of pixels
  LONGLONG slope;              // across, from end to end
  int direction;               // along: 1 or -1
  std::ptrdiff_t next, aside;  // in the memory, for one more along and across
  LONGLONG alongEnds[2], acrossEnds[2];
};

// After i steps a line is slope * i / count across, rounded to the nearest number and halves to the lower one. That is
// the quotient of (2 * slope * i + count - 1) / (2 * count), rounded down; the remainder is kept from step to step.
struct Across {
  LONGLONG quotient, remainder;
};

Across AcrossAt(const Steps& line, LONGLONG step) {
  if (step == 0) return {0, line.count - 1};
  const __int128 dividend = static_cast<__int128>(line.slope) * 2 * step + line.count - 1, divisor = 2 * line.count;
  LONGLONG quotient = LONGLONG(dividend / divisor), remainder = LONGLONG(dividend % divisor);
  if (remainder < 0) {
    remainder += 2 * line.count;
    --quotient;
  }
  return {quotient, remainder};
}

template <class Put>
void Walk(const PixelMemory& memory, const Steps& line, Put put) {
  const LONGLONG low = line.alongEnds[0], high = line.alongEnds[1];
  const LONGLONG before = line.direction > 0 ? low - line.along : line.along - (high - 1);
  const LONGLONG until = line.direction > 0 ? high - line.along : line.along - low + 1;
  const LONGLONG first = std::max<LONGLONG>(before, 0), last = std::min(until, line.count);
  if (first >= last) return;
  auto [quotient, remainder] = AcrossAt(line, first);
  LONGLONG across = line.across + quotient;
  DWORD* pixel = memory.first + (line.along + line.direction * first) * std::abs(line.next) + across * line.aside;
  for (LONGLONG step = first; step < last; ++step) {
    if (across >= line.acrossEnds[0] && across < line.acrossEnds[1]) put(*pixel, step);
    pixel += line.next;
    remainder += 2 * line.slope;
    if (remainder >= 2 * line.count) {
      remainder -= 2 * line.count;
      ++across;
      pixel += line.aside;
    } else if (remainder < 0) {
      remainder += 2 * line.count;
      --across;
      pixel -= line.aside;
    }
  }
}

template <class Put>
void Draw(const PixelMemory& memory, std::span<const RECT> clip, POINT from, POINT to, Put put) {
  const LONGLONG dx = LONGLONG(to.x) - from.x, dy = LONGLONG(to.y) - from.y;
  const bool flat = std::abs(dx) >= std::abs(dy);
  Steps line =
      flat ? Steps{from.x, from.y, std::abs(dx), dy, dx < 0 ? -1 : 1, dx < 0 ? -1 : 1, memory.stride, {}, {}}
           : Steps{from.y, from.x, std::abs(dy), dx, dy < 0 ? -1 : 1, dy < 0 ? -memory.stride : memory.stride, 1,
                   {},     {}};
  for (const RECT& rect : clip) {
    const LONGLONG xs[] = {rect.left, rect.right}, ys[] = {rect.top, rect.bottom};
    std::copy_n(flat ? xs : ys, 2, line.alongEnds);
    std::copy_n(flat ? ys : xs, 2, line.acrossEnds);
    Walk(memory, line, put);
  }
}

}  // namespace

void DrawThinLine(const PixelMemory& memory, std::span<const RECT> clip, POINT from, POINT to, DWORD pixel) {
  Draw(memory, clip, from, to, [pixel](DWORD& at, LONGLONG) { at = pixel; });
}

void DrawDottedLine(const PixelMemory& memory, std::span<const RECT> clip, POINT from, POINT to, DWORD pixel,
                    const DWORD* gap, unsigned step) {
  Draw(memory, clip, from, to, [=](DWORD& at, LONGLONG i) {
    if ((ULONGLONG(i) + step) % (2 * kDot) < kDot)
      at = pixel;
    else if (gap)
      at = *gap;
  });
}

ULONGLONG PixelsOfLine(POINT from, POINT to) {
  return ULONGLONG(std::max(std::abs(LONGLONG(to.x) - from.x), std::abs(LONGLONG(to.y) - from.y)));
}
