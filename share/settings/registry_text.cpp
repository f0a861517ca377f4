// Parsing registry text. A cursor reads each line from left to right; the first error ends parsing and reports its
// line.
#include "share/settings/registry_text.h"

#include <algorithm>
#include <iterator>

#include "framework/text.h"
#include "platform/text.h"

namespace registry_text {

namespace {

using Text = std::basic_string<TCHAR>;
using TextView = std::basic_string_view<TCHAR>;

constexpr TextView kFirstLine = _T("Windows Registry Editor Version 5.00");
constexpr std::size_t kMostKeyUnits = 255;
constexpr std::size_t kMostValueNameUnits = 16383;
constexpr int kMostLevels = 512;

struct HiveName {
  LPCTSTR text;
  bool isUser;
};
constexpr HiveName kHives[] = {
    {_T("HKEY_CURRENT_USER"), true},
    {_T("HKEY_LOCAL_MACHINE"), false},
    {_T("HKCU"), true},
    {_T("HKLM"), false},
};

constexpr const char* kAskForExport = "export the key again and import that file";

bool IsBlank(TCHAR unit) { return unit == ' ' || unit == '\t'; }

int HexDigit(TCHAR unit) {
  if (unit >= '0' && unit <= '9') return unit - '0';
  if (unit >= 'a' && unit <= 'f') return unit - 'a' + 10;
  if (unit >= 'A' && unit <= 'F') return unit - 'A' + 10;
  return -1;
}

// Converts a file to UTF-16 by its byte order mark.
bool Decode(std::string_view bytes, Text& text, Error& error) {
  if (bytes.size() > kMostBytes) {
    error = {0, "the file is larger than 64 MiB", "split it"};
    return false;
  }
  if (bytes.starts_with("\xFF\xFE")) {
    bytes.remove_prefix(2);
    if (bytes.size() % 2 != 0) {
      error = {0, "the file ends in the middle of a character", kAskForExport};
      return false;
    }
    text.reserve(bytes.size() / 2);
    for (std::size_t i = 0; i < bytes.size(); i += 2) text.push_back(TCHAR(BYTE(bytes[i]) | BYTE(bytes[i + 1]) << 8));
    return true;
  }
  if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
  const CString wide = FromUtf8(bytes);
  const std::string back = ToUtf8(wide);
  const auto wrong = std::mismatch(bytes.begin(), bytes.end(), back.begin(), back.end()).first;
  if (wrong != bytes.end()) {
    const auto line = 1 + std::count(bytes.begin(), wrong, '\n');
    error = {int(line), "the file is neither UTF-16 with a mark nor UTF-8", "save it as Unicode"};
    return false;
  }
  text.assign(wide.GetString(), std::size_t(wide.GetLength()));
  return true;
}

bool IsSameWord(TextView a, TextView b) {
  return CompareStringOrdinal(a.data(), int(a.size()), b.data(), int(b.size()), TRUE) == CSTR_EQUAL;
}

// Reads one line from left to right. A Take... call that returns false may have moved the cursor.
class Cursor {
 public:
  Cursor(TextView line) : rest_(line) {}

  bool AtEnd() const { return rest_.empty(); }
  TCHAR Peek() const { return rest_.empty() ? TCHAR(0) : rest_.front(); }
  void SkipBlanks() {
    while (!rest_.empty() && IsBlank(rest_.front())) rest_.remove_prefix(1);
  }
  bool Take(TCHAR unit) {
    if (Peek() != unit || rest_.empty()) return false;
    rest_.remove_prefix(1);
    return true;
  }
  bool TakeWord(TextView word) {
    const bool found = rest_.size() >= word.size() && IsSameWord(rest_.substr(0, word.size()), word);
    if (found) rest_.remove_prefix(word.size());
    return found;
  }
  // 1 to `most` hexadecimal digits; false for none or more.
  bool TakeHex(int most, DWORD& number) {
    int digits = 0;
    for (number = 0; HexDigit(Peek()) >= 0; ++digits) {
      if (digits == most) return false;
      number = number << 4 | DWORD(HexDigit(Peek()));
      rest_.remove_prefix(1);
    }
    return digits > 0;
  }
  // A text in quotes; "\" escapes the next unit.
  bool TakeQuoted(Text& text) {
    if (!Take('"')) return false;
    while (!rest_.empty() && Peek() != '"') {
      if (Take('\\') && rest_.empty()) return false;
      text += Peek();
      rest_.remove_prefix(1);
    }
    return Take('"');
  }
  // Whether only blanks and a comment are left. Skips the blanks.
  bool AtLineEnd() {
    SkipBlanks();
    return AtEnd() || Peek() == ';';
  }
  TextView Rest() const { return rest_; }

 private:
  TextView rest_;
};

class Parser {
 public:
  Parser(TextView text, std::vector<Step>& steps, Error& error) : rest_(text), steps_(steps), error_(error) {}

  bool Run() {
    TextView line;
    if (!NextLine(line) || TrimRight(line) != kFirstLine) {
      return Fail("the first line is not \"Windows Registry Editor Version 5.00\"",
                  "import a file in that form; older forms are not read");
    }
    while (NextLine(line)) {
      Cursor cursor(line);
      if (cursor.AtLineEnd()) continue;
      if (!(cursor.Peek() == '[' ? ReadKey(cursor) : ReadValue(cursor))) return false;
    }
    return error_.reason.empty();
  }

 private:
  static TextView TrimRight(TextView text) {
    while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
    return text;
  }

  bool Fail(std::string reason, std::string remedy) {
    if (error_.reason.empty()) error_ = {line_, std::move(reason), std::move(remedy)};
    return false;
  }

  bool NextLine(TextView& line) {
    if (rest_.empty()) return false;
    ++line_;
    const std::size_t end = rest_.find(TCHAR('\n'));
    line = rest_.substr(0, end);
    rest_.remove_prefix(std::min(end, rest_.size() - 1) + 1);
    if (line.ends_with(TCHAR('\r'))) line.remove_suffix(1);
    if (line.size() > kMostLineUnits) return Fail("the line is too long", "break hex data with \"\\\"");
    if (line.find(TCHAR(0)) != TextView::npos) return Fail("the line contains a NUL character", kAskForExport);
    return true;
  }

  bool Add(Step::Kind kind, Step step) {
    if (steps_.size() == kMostSteps) return Fail("the file has more than 1,000,000 entries", "split it");
    step.kind = kind;
    step.line = line_;
    steps_.push_back(std::move(step));
    return true;
  }

  bool ReadKey(Cursor& cursor) {
    cursor.Take('[');
    const bool deletes = cursor.Take('-');
    const std::size_t end = cursor.Rest().rfind(TCHAR(']'));
    if (end == TextView::npos) return Fail("no \"]\" after the key's name", "close it");
    if (!Cursor(cursor.Rest().substr(end + 1)).AtLineEnd())
      return Fail("text after \"]\"", "put it on a line of its own");
    Step step;
    if (!ParseKeyName(cursor.Rest().substr(0, end), step.key)) {
      return Fail("not a key: " + ToUtf8(cursor.Rest().substr(0, std::min<std::size_t>(end, 200))),
                  "begin with HKEY_CURRENT_USER or HKEY_LOCAL_MACHINE; names have 1 to 255 characters");
    }
    if (deletes && step.key.path.empty()) return Fail("a whole hive cannot be deleted", "name a key below it");
    key_ = deletes ? KeyName() : step.key;
    return Add(deletes ? Step::Kind::kDeleteKey : Step::Kind::kCreateKey, std::move(step));
  }

  bool ReadValue(Cursor& cursor) {
    Step step;
    if (!cursor.Take('@') && !cursor.TakeQuoted(step.name)) {
      return Fail("not a key, a value or a comment", "begin a value with its name in quotes, or with @");
    }
    if (step.name.size() > kMostValueNameUnits) return Fail("the value's name is too long", "16,383 characters fit");
    if (!key_.hive) return Fail("a value without a key", "put the line below a [key]");
    step.key = key_;
    cursor.SkipBlanks();
    if (!cursor.Take('=')) return Fail("no \"=\" after the value's name", "write \"name\"=data");
    cursor.SkipBlanks();
    const bool deletes = cursor.Take('-');
    if (!deletes && !ReadData(cursor, step)) return false;
    if (!cursor.AtLineEnd()) return Fail("text after the data", "put it on a line of its own");
    return Add(deletes ? Step::Kind::kDeleteValue : Step::Kind::kSetValue, std::move(step));
  }

  bool ReadData(Cursor& cursor, Step& step) {
    if (cursor.Peek() == '"') return ReadText(cursor, step);
    if (cursor.TakeWord(_T("dword:"))) return ReadNumber(cursor, step);
    if (!cursor.TakeWord(_T("hex"))) {
      return Fail("unknown data", "data is \"text\", dword:0000002a, hex:01,02 or hex(2):01,02");
    }
    step.type = REG_BINARY;
    if (cursor.Take('(') && (!cursor.TakeHex(8, step.type) || !cursor.Take(')'))) {
      return Fail("no type between \"hex(\" and \")\"", "write it with 1 to 8 hexadecimal digits");
    }
    if (!cursor.Take(':')) return Fail("no \":\" after hex", "write hex:01,02");
    return ReadBytes(cursor, step);
  }

  bool ReadText(Cursor& cursor, Step& step) {
    Text text;
    if (!cursor.TakeQuoted(text))
      return Fail("the text has no closing quote", "close it; write \\\" for a quote in it");
    step.type = REG_SZ;
    for (std::size_t i = 0; i <= text.size(); ++i) {
      step.data.push_back(BYTE(text.c_str()[i]));
      step.data.push_back(BYTE(text.c_str()[i] >> 8));
    }
    return true;
  }

  bool ReadNumber(Cursor& cursor, Step& step) {
    DWORD number = 0;
    cursor.SkipBlanks();
    if (!cursor.TakeHex(8, number))
      return Fail("not a number of 32 bits", "write dword: and 1 to 8 hexadecimal digits");
    step.type = REG_DWORD;
    for (int shift = 0; shift < 32; shift += 8) step.data.push_back(BYTE(number >> shift));
    return true;
  }

  // Bytes separated by commas; "\" continues them on the next line. There may be none.
  bool ReadBytes(Cursor& cursor, Step& step) {
    for (bool more = false;;) {
      cursor.SkipBlanks();
      DWORD byte = 0;
      if (cursor.Take('\\')) {
        TextView line;
        if (!cursor.AtLineEnd()) return Fail("text after \"\\\"", "end the line with it");
        if (!NextLine(line)) return Fail("the file ends in the middle of a value", kAskForExport);
        cursor = Cursor(line);
      } else if (!more && cursor.AtLineEnd()) {
        return true;
      } else if (cursor.TakeHex(2, byte)) {
        step.data.push_back(BYTE(byte));
        cursor.SkipBlanks();
        more = cursor.Take(',');
        if (!more && !cursor.AtLineEnd()) return FailByte();
      } else {
        return FailByte();
      }
    }
  }

  bool FailByte() {
    return Fail("not a byte in hex data", "write bytes as two hexadecimal digits with commas between");
  }

  TextView rest_;
  std::vector<Step>& steps_;
  Error& error_;
  KeyName key_;
  int line_ = 0;
};

}  // namespace

bool ParseKeyName(TextView text, KeyName& key) {
  if (text.ends_with(TCHAR('\\'))) text.remove_suffix(1);
  const std::size_t end = std::min(text.find(TCHAR('\\')), text.size());
  const TextView hive = text.substr(0, end);
  const auto* found = std::find_if(std::begin(kHives), std::end(kHives),
                                   [&](const HiveName& row) { return IsSameWord(row.text, hive); });
  if (found == std::end(kHives)) return false;
  key.hive = found->isUser ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
  key.path = text.substr(std::min(end + 1, text.size()));
  if (key.path.empty()) return end == text.size();
  int levels = 0;
  for (std::size_t start = 0; start <= key.path.size(); ++levels) {
    const std::size_t stop = std::min(key.path.find(TCHAR('\\'), start), key.path.size());
    if (stop == start || stop - start > kMostKeyUnits) return false;
    start = stop + 1;
  }
  return levels <= kMostLevels && key.path.find(TCHAR(0)) == Text::npos;
}

Text FullName(const KeyName& key) {
  const Text hive = key.hive == HKEY_CURRENT_USER ? kHives[0].text : kHives[1].text;
  return key.path.empty() ? hive : hive + TCHAR('\\') + key.path;
}

bool Parse(std::string_view bytes, std::vector<Step>& steps, Error& error) {
  Text text;
  steps.clear();
  error = {};
  if (Decode(bytes, text, error) && Parser(text, steps, error).Run()) return true;
  steps.clear();
  return false;
}

}  // namespace registry_text
