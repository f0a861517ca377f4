#include "host/settings/feed_color_table.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/shell/color_text.h"

namespace kestrova {
namespace {

constexpr std::size_t kBarCells = 64;

// A text on a background of the colour (24-bit escape sequence).
std::string OnColor(unsigned long color, const std::string& text) {
  return fmt::format("\x1b[48;2;{};{};{}m{}\x1b[0m", color & 0xFF, color >> 8 & 0xFF, color >> 16 & 0xFF, text);
}

std::string Bar(const std::vector<FeedColorRow>& rows) {
  std::string bar, legend;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const std::size_t from = kBarCells * i / rows.size(), to = kBarCells * (i + 1) / rows.size();
    if (from == to) continue;
    bar += OnColor(rows[i].color, std::string(to - from, ' '));
    const std::string label = FeedText(rows[i].up_to);
    if (legend.size() + label.size() < to + legend.empty()) legend += fmt::format("{:>{}}", label, to - legend.size());
  }
  return bar + '\n' + legend + '\n';
}

}  // namespace

std::string FeedText(double feed) { return fmt::format("{:.2f}", feed); }

std::string ColorPatch(unsigned long color, bool colored) {
  return (colored ? OnColor(color, "    ") + ' ' : "") + ColorText(color);
}

std::string FeedColorsText(const std::vector<FeedColorRow>& rows, bool colored) {
  std::string text = colored && !rows.empty() ? Bar(rows) : "";
  std::size_t width = 0;
  for (const FeedColorRow& row : rows) width = std::max(width, FeedText(row.up_to).size());
  for (const FeedColorRow& row : rows)
    text += fmt::format("up to {:>{}}  {}\n", FeedText(row.up_to), width, ColorPatch(row.color, colored));
  return text + fmt::format("{:<{}}  none\n", "above", width + 6);
}

}  // namespace kestrova
