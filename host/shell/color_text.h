// A colour as users write it, #RRGGBB, and as the product stores it, a number 0x00BBGGRR.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/types.h"

namespace kestrova {

inline constexpr DWORD kHighestColor = 0xFFFFFF;  // no higher number is an #RRGGBB

// "#RRGGBB"; a number above kHighestColor as "0x" and eight digits.
std::string ColorText(DWORD color);
// The number of a text #RRGGBB, 0xBBGGRR or decimal (32 bits); nullopt for any other text.
std::optional<DWORD> ColorFromText(std::string_view text);

}  // namespace kestrova
