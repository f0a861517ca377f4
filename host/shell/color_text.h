// A colour as people write it, #RRGGBB, and as the product keeps it, a number 0x00BBGGRR.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/types.h"

namespace kestrova {

inline constexpr DWORD kHighestColor = 0xFFFFFF;  // no higher number is an #RRGGBB

// "#RRGGBB"; a number above 0xFFFFFF, which is no plain colour, as "0x" and eight digits.
std::string ColorText(DWORD color);
// Back from #RRGGBB, or from the number itself, decimal or "0x" and hexadecimal, up to 32 bits; none for other texts.
std::optional<DWORD> ColorFromText(std::string_view text);

}  // namespace kestrova
