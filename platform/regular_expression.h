// Regular expressions on the product's texts. Not public.
//
// On Linux ICU's expressions; elsewhere those of the C++ library, with the syntax of ECMAScript. A match that needs too
// much time or stack counts as no match.
#pragma once

#include <memory>

#include "platform/types.h"

class RegularExpression {
 public:
  RegularExpression(TextView pattern, bool matchCase);
  ~RegularExpression();
  RegularExpression(const RegularExpression&) = delete;
  RegularExpression& operator=(const RegularExpression&) = delete;

  // False if the pattern is not valid.
  bool IsValid() const;
  // Whether the text has a match, or is one.
  bool Matches(TextView text, bool whole) const;
  // The text with all matches replaced; $1 to $9 are the groups. The text itself if the replacement is not valid.
  Text Replaced(TextView text, TextView by) const;

 private:
  struct Pattern;
  const std::unique_ptr<Pattern> pattern_;
};
