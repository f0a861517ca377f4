// A table of feed colours as the command line shows it: lines of text, on a terminal with a bar in the colours
// themselves.
#pragma once

#include <string>
#include <vector>

namespace kestrova {

struct FeedColorRow {
  double up_to = 0;         // the threshold
  unsigned long color = 0;  // 0x00BBGGRR
  bool operator==(const FeedColorRow&) const = default;
};

// "100.00": thresholds that look alike are one row.
std::string FeedText(double feed);

// "#RRGGBB" with a patch of the colour ahead of it, if `colored`.
std::string ColorPatch(unsigned long color, bool colored);
// One line a row, ascending as they are given, and one for the feeds above. `colored` puts a bar and its legend ahead:
// a segment of equal width for each row, its threshold below its end where there is room.
std::string FeedColorsText(const std::vector<FeedColorRow>& rows, bool colored);

}  // namespace kestrova
