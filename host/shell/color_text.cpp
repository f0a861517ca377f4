#include "host/shell/color_text.h"

#include <fmt/format.h>

#include <charconv>

namespace kestrova {
namespace {

// #RRGGBB has red in its highest byte, the number in its lowest.
DWORD WithRedAndBlueSwapped(DWORD color) { return (color & 0xFF) << 16 | (color & 0xFF00) | (color >> 16 & 0xFF); }

}  // namespace

std::string ColorText(DWORD color) {
  return color > kHighestColor ? fmt::format("0x{:08X}", color) : fmt::format("#{:06X}", WithRedAndBlueSwapped(color));
}

std::optional<DWORD> ColorFromText(std::string_view text) {
  const bool rgb = text.starts_with('#') && text.size() == 7;
  const bool hex = text.starts_with("0x") || text.starts_with("0X");
  if (rgb) text.remove_prefix(1);
  if (hex) text.remove_prefix(2);
  DWORD number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, rgb || hex ? 16 : 10);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return rgb ? WithRedAndBlueSwapped(number) : number;
}

}  // namespace kestrova
