// Several values as one text, so that one comparison checks all of them and shows them where it fails.
#pragma once

#include <fmt/format.h>

#include <string>
#include <type_traits>

#include "framework/text.h"

namespace kvtest {

// "1|abc|-2.5": numbers, texts, enumerators and truth values as numbers.
template <class... Types>
std::string Values(const Types&... values) {
  const auto text = [](const auto& value) -> std::string {
    using Type = std::remove_cvref_t<decltype(value)>;
    if constexpr (std::is_convertible_v<const Type&, std::string>) return value;
    if constexpr (std::is_enum_v<Type> || std::is_same_v<Type, bool>) return std::to_string(int(value));
    if constexpr (std::is_arithmetic_v<Type>) return fmt::format("{}", value);
    if constexpr (std::is_convertible_v<const Type&, CString> && !std::is_arithmetic_v<Type>)
      return ToUtf8(CString(value));
  };
  std::string all;
  ((all += text(values) + '|'), ...);
  all.pop_back();
  return all;
}

}  // namespace kvtest
