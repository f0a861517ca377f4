// Patterns of file names by the platform's rules.
#pragma once

#include <string>
#include <string_view>

class NamePattern {
 public:
  // Upper-case text of names, * and ?.
  explicit NamePattern(std::u16string_view upper);
  static bool IsPattern(std::u16string_view text) { return text.find_first_of(u"*?") != text.npos; }

  // The name in upper case. Takes at most the product of both lengths.
  bool Matches(std::u16string_view upper) const;

 private:
  std::u16string expression_;
};
