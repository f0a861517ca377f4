#include "host/shell/output.h"

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>

namespace kestrova {
namespace {

constexpr int kJsonIndent = 2;
constexpr unsigned char kDelete = 0x7F;
constexpr unsigned char kC1Lead = 0xC2;  // first byte of U+0080 to U+009F
constexpr unsigned char kC1End = 0xA0;   // one past the second bytes of U+0080 to U+009F

unsigned char ByteAt(std::string_view text, std::size_t at) { return static_cast<unsigned char>(text[at]); }

bool IsC1(std::string_view text, std::size_t at) {
  return ByteAt(text, at) == kC1Lead && at + 1 < text.size() && ByteAt(text, at + 1) < kC1End;
}

// The length of the UTF-8 character at `at`, or 0: the bytes that RFC 3629, section 4, allows.
std::size_t CharacterLength(std::string_view text, std::size_t at) {
  const unsigned char lead = ByteAt(text, at);
  if (lead < 0x80) return 1;
  if (lead < 0xC2 || lead > 0xF4) return 0;
  const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  if (text.size() - at < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((ByteAt(text, at + i) & 0xC0) != 0x80) return 0;
  }
  const unsigned char second = ByteAt(text, at + 1);
  const bool overlong = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
  const bool surrogate = lead == 0xED && second >= 0xA0;
  const bool too_high = lead == 0xF4 && second >= 0x90;
  return overlong || surrogate || too_high ? 0 : length;
}

enum class LineEnds { kBlank, kKeep };

bool IsPlain(char c, LineEnds lineEnds) {
  return (c >= ' ' && c < char(kDelete)) || (c == '\n' && lineEnds == LineEnds::kKeep);
}

// Appends text, from its first byte that is not plain on.
void AppendHarmless(std::string& out, std::string_view text, LineEnds lineEnds) {
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t length = CharacterLength(text, i);
    if (length == 0) {
      fmt::format_to(std::back_inserter(out), "\\x{:02X}", ByteAt(text, i));
      ++i;
      continue;
    }
    const bool blank = length == 1 ? !IsPlain(text[i], lineEnds) : IsC1(text, i);
    out.append(blank ? " " : text.substr(i, length));
    i += length;
  }
}

void MakeHarmless(std::string& text, std::size_t from, LineEnds lineEnds) {
  const auto odd =
      std::find_if_not(text.begin() + std::ptrdiff_t(from), text.end(), [&](char c) { return IsPlain(c, lineEnds); });
  if (odd == text.end()) return;
  const std::string rest(odd, text.end());
  text.erase(odd, text.end());
  AppendHarmless(text, rest, lineEnds);
}

}  // namespace

void MakeHarmless(std::string& text, std::size_t from) { MakeHarmless(text, from, LineEnds::kBlank); }

std::string Harmless(std::string_view text) {
  std::string result(text);
  MakeHarmless(result);
  return result;
}

std::string Counted(long long count, const char* what) {
  return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

void PrintLines(std::string_view text) {
  std::string harmless(text);
  MakeHarmless(harmless, 0, LineEnds::kKeep);
  PrintRaw(harmless);
}

std::string JsonText(const nlohmann::ordered_json& json, int indent) {
  const std::string text = json.dump(indent, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
  std::string out;
  out.reserve(text.size() + 1);
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool c1 = IsC1(text, i);
    if (c1) ++i;
    if (c1 || ByteAt(text, i) == kDelete) {
      fmt::format_to(std::back_inserter(out), "\\u{:04x}", ByteAt(text, i));
    } else {
      out += text[i];
    }
  }
  return out;
}

void PrintJson(const nlohmann::ordered_json& json) { PrintRaw(JsonText(json, kJsonIndent) + '\n'); }

void JsonPrinter::Add(std::string_view name, const nlohmann::ordered_json& value) {
  Begin(name);
  const std::string text = JsonText(value, kJsonIndent);
  const std::string indent(closing_.size() * kJsonIndent, ' ');
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size() - 1) + 1;
    PrintRaw(std::string_view(text).substr(at, end - at));
    if (text[end - 1] == '\n') PrintRaw(indent);
    at = end;
  }
}

void JsonPrinter::AddElement(int number) {
  Begin({});
  PrintRaw(std::to_string(number));
}

void JsonPrinter::Open(std::string_view name, char bracket) {
  if (!closing_.empty()) Begin(name);
  PrintRaw({&bracket, 1});
  closing_ += bracket == '{' ? '}' : ']';
  empty_ = true;
}

void JsonPrinter::Close() {
  const char bracket = closing_.back();
  closing_.pop_back();
  if (!empty_) PrintRaw('\n' + std::string(closing_.size() * kJsonIndent, ' '));
  PrintRaw({&bracket, 1});
  empty_ = false;
  if (closing_.empty()) PrintRaw("\n");
}

void JsonPrinter::Begin(std::string_view name) {
  PrintRaw((empty_ ? "\n" : ",\n") + std::string(closing_.size() * kJsonIndent, ' '));
  if (!name.empty()) PrintRaw(JsonText(name) + ": ");
  empty_ = false;
}

void PrintNote(const std::string& text) { std::fprintf(stderr, "kestrova: %s\n", Harmless(text).c_str()); }

void PrintOutOfMemory() noexcept { std::fputs("kestrova: not enough memory\n", stderr); }

void PrintRaw(std::string_view bytes) { std::fwrite(bytes.data(), 1, bytes.size(), stdout); }

}  // namespace kestrova
