// The rules: blanks and tabs outside quotes separate words. Before a quote, 2n backslashes give n backslashes, and the
// quote opens or closes; 2n + 1 backslashes give n backslashes and a quote as text. Other backslashes are ordinary
// characters. A doubled quote inside quotes is one quote. The first word, the program, has no escapes.
#include "platform/linux/command_line.h"

#include "platform/linux/utf8.h"

namespace {

bool IsBlank(char16_t unit) { return unit == u' ' || unit == u'\t'; }

std::u16string FirstWord(std::u16string_view& rest) {
  std::u16string word;
  bool quoted = false;
  std::size_t at = 0;
  for (; at < rest.size() && (quoted || !IsBlank(rest[at])); ++at) {
    if (rest[at] == u'"') {
      quoted = !quoted;
    } else {
      word += rest[at];
    }
  }
  rest.remove_prefix(at);
  return word;
}

std::u16string NextWord(std::u16string_view& rest) {
  std::u16string word;
  bool quoted = false;
  std::size_t at = 0;
  while (at < rest.size() && (quoted || !IsBlank(rest[at]))) {
    std::size_t backslashes = 0;
    while (at < rest.size() && rest[at] == u'\\') ++backslashes, ++at;
    const bool quote = at < rest.size() && rest[at] == u'"';
    word.append(quote ? backslashes / 2 : backslashes, u'\\');
    if (quote && backslashes % 2 == 1) {
      word += u'"';
      ++at;
    } else if (quote && quoted && at + 1 < rest.size() && rest[at + 1] == u'"') {
      word += u'"';
      at += 2;
    } else if (quote) {
      quoted = !quoted;
      ++at;
    } else if (backslashes == 0) {
      word += rest[at++];
    }
  }
  rest.remove_prefix(at);
  return word;
}

}  // namespace

std::vector<std::string> SplitCommandLine(LPCWSTR line) {
  std::vector<std::string> words;
  std::u16string_view rest = line ? line : u"";
  for (;;) {
    while (!rest.empty() && IsBlank(rest.front())) rest.remove_prefix(1);
    if (rest.empty()) return words;
    words.push_back(Utf8FromWide(words.empty() ? FirstWord(rest) : NextWord(rest)));
  }
}
