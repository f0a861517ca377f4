// The platform converts a pattern before it compares, with three internal signs:
//
//   <  any characters except a name's last dot                  *. becomes <.
//   >  one character, or nothing before a dot or at the end     ? becomes >
//   "  a dot, or nothing at the end                             .? and .* become "? and "*
#include "platform/linux/name_pattern.h"

#include <vector>

NamePattern::NamePattern(std::u16string_view upper) {
  if (upper == u"*.*") upper = u"*";
  for (std::size_t i = 0; i < upper.size(); ++i) {
    const char16_t next = i + 1 < upper.size() ? upper[i + 1] : u'\0';
    if (upper[i] == u'?') {
      expression_ += u'>';
    } else if (upper[i] == u'*' && next == u'.') {
      expression_ += u'<';
    } else if (upper[i] == u'.' && (next == u'?' || next == u'*')) {
      expression_ += u'"';
    } else {
      expression_ += upper[i];
    }
  }
  while (expression_.size() > 1 && expression_.back() == u'.') expression_.pop_back();  // names never end in a dot
}

bool NamePattern::Matches(std::u16string_view upper) const {
  const std::size_t size = expression_.size();
  const std::size_t last_point = upper.rfind(u'.');
  // The positions of the expression that the characters so far can reach.
  std::vector<char> places(size + 1);
  std::vector<char> next(size + 1);
  places[0] = 1;
  for (std::size_t k = 0; k <= upper.size(); ++k) {
    const bool at_end = k == upper.size();
    const bool at_point = !at_end && upper[k] == u'.';
    next.assign(size + 1, 0);
    for (std::size_t i = 0; i < size; ++i) {
      if (!places[i]) continue;
      const char16_t sign = expression_[i];
      const bool many = sign == u'*' || sign == u'<';
      if (many || (sign == u'>' && (at_end || at_point)) || (sign == u'"' && at_end)) places[i + 1] = 1;
      if (at_end) continue;
      if (many) {
        next[i] |= sign == u'*' || k != last_point;
      } else {
        next[i + 1] |= sign == u'>' ? !at_point : sign == u'"' ? at_point : sign == upper[k];
      }
    }
    if (at_end) return places[size] != 0;
    places.swap(next);
  }
  return false;
}
