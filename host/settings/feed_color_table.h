// A table of feed colours as lines of text; on a terminal with a bar in these colours.
#pragma once

#include <string>
#include <vector>

namespace kestrova {

struct FeedColorRow {
  double up_to = 0;         // the threshold
  unsigned long color = 0;  // 0x00BBGGRR
  bool operator==(const FeedColorRow&) const = default;
};

// "100.00". Thresholds with the same text count as one row.
std::string FeedText(double feed);

// "#RRGGBB"; if `colored`, after a patch of the colour.
std::string ColorPatch(unsigned long color, bool colored);
// One line per row and one for the feeds above the last row. If `colored`, a bar and its legend come first: segments of
// equal width, and each threshold below the end of its segment where there is room.
std::string FeedColorsText(const std::vector<FeedColorRow>& rows, bool colored);

}  // namespace kestrova
