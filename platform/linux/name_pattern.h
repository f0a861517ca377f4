// File name patterns by the platform's rules.
#pragma once

#include <string>
#include <string_view>

class NamePattern {
 public:
  // An upper-case name or pattern with * and ?.
  explicit NamePattern(std::u16string_view upper);
  static bool IsPattern(std::u16string_view text) { return text.find_first_of(u"*?") != text.npos; }

  // `upper` is the name in upper case. The time is at most proportional to the product of both lengths.
  bool Matches(std::u16string_view upper) const;

 private:
  std::u16string expression_;
};
