// CString::Format: parses a printf format. {fmt} prints the numbers; text is padded here, so that widths and precisions
// count UTF-16 units.
#include <fmt/printf.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "framework/resources.h"
#include "framework/text.h"

namespace {

constexpr int kMaximumField = 1 << 20;  // the largest width or precision; larger ones are cut to it

// One conversion of a format: the part from the % to its letter.
struct Conversion {
  TextView flags;
  int width = 0;
  int precision = -1;
  char letter = 0;
};

class Formatter {
 public:
  Formatter(TextView format, std::initializer_list<FormatArgument> arguments)
      : format_(format), next_(arguments.begin()), end_(arguments.end()) {}

  Text Run() {
    while (at_ < format_.size()) {
      const std::size_t percent = std::min(format_.find(_T('%'), at_), format_.size());
      out_.append(format_, at_, percent - at_);
      at_ = percent;
      if (at_ == format_.size()) break;
      const auto* first = next_;
      Conversion conversion;
      const bool parsed = Parse(conversion);
      if (parsed && Print(conversion)) continue;
      // The conversion stays as text. It consumes an argument of the wrong kind, so the others keep their places.
      if (!parsed) next_ = first;
      out_.append(format_, percent, at_ - percent);
    }
    return std::move(out_);
  }

 private:
  TCHAR Peek() const { return at_ < format_.size() ? format_[at_] : _T('\0'); }

  bool Number(int& number) {
    if (Peek() == _T('*')) {
      ++at_;
      if (next_ == end_ || next_->kind > FormatArgument::Kind::kUnsigned) return false;
      number = int(std::clamp<LONGLONG>(LONGLONG(next_++->integer), -kMaximumField, kMaximumField));
      return true;
    }
    number = 0;
    for (; Peek() >= _T('0') && Peek() <= _T('9'); ++at_)
      number = std::min(number * 10 + (Peek() - _T('0')), kMaximumField);
    return true;
  }

  bool Parse(Conversion& conversion) {
    const std::size_t flags = ++at_;
    at_ = std::min(format_.find_first_not_of(_T("-+ #0"), at_), format_.size());
    conversion.flags = format_.substr(flags, at_ - flags);
    if (!Number(conversion.width)) return false;
    if (Peek() == _T('.')) {
      ++at_;
      if (!Number(conversion.precision)) return false;
    }
    for (;;) {
      if (format_.substr(at_, 3) == _T("I64") || format_.substr(at_, 3) == _T("I32")) {
        at_ += 3;
      } else if (Peek() == _T('I')) {
        ++at_;
      } else if (Peek() != 0 && TextView(_T("hlLjztqw")).find(Peek()) != TextView::npos) {
        ++at_;
      } else {
        break;
      }
    }
    if (Peek() == 0 || Peek() >= 0x80) return false;
    conversion.letter = char(format_[at_++]);
    return true;
  }

  static bool Has(const Conversion& conversion, TCHAR flag) { return conversion.flags.find(flag) != TextView::npos; }

  // Appends a number padded to its width. Zeros go between the sign or 0x and the digits.
  void AppendNumber(const Conversion& conversion, std::string number, bool zeros) {
    const std::size_t width = std::size_t(std::abs(conversion.width));
    const std::size_t missing = width > number.size() ? width - number.size() : 0;
    if (conversion.width < 0 || Has(conversion, _T('-'))) {
      number.append(missing, ' ');
    } else if (zeros && Has(conversion, _T('0'))) {
      std::size_t at = number.find_first_not_of("+- ");
      if (number.size() > at + 1 && (number[at + 1] == 'x' || number[at + 1] == 'X')) at += 2;
      number.insert(at, missing, '0');
    } else {
      number.insert(0, missing, ' ');
    }
    out_.append(number.begin(), number.end());
  }

  void AppendPadded(const Conversion& conversion, TextView text) {
    if (conversion.precision >= 0) text = text.substr(0, std::size_t(conversion.precision));
    const bool left = conversion.width < 0 || conversion.flags.find(_T('-')) != TextView::npos;
    const std::size_t width = std::size_t(std::abs(conversion.width));
    const std::size_t blanks = width > text.size() ? width - text.size() : 0;
    if (!left) out_.append(blanks, _T(' '));
    out_.append(text);
    if (left) out_.append(blanks, _T(' '));
  }

  bool PrintInteger(const Conversion& conversion, const FormatArgument& argument) {
    using Kind = FormatArgument::Kind;
    if (argument.kind == Kind::kReal || argument.kind == Kind::kText || argument.kind == Kind::kNarrow) return false;
    // An integer smaller than an int is widened to an int; then the conversion decides about the sign.
    const int unused = 64 - std::max(argument.bytes, 4) * 8;
    ULONGLONG value = argument.integer << unused >> unused;
    std::string sign;
    if (conversion.letter == 'd' || conversion.letter == 'i') {
      const LONGLONG asSigned = LONGLONG(argument.integer << unused) >> unused;
      value = asSigned < 0 ? 0 - ULONGLONG(asSigned) : ULONGLONG(asSigned);
      sign = asSigned < 0 ? "-" : Has(conversion, _T('+')) ? "+" : Has(conversion, _T(' ')) ? " " : "";
    }
    AppendNumber(conversion, sign + Digits(conversion, value), /*zeros=*/conversion.precision < 0);
    return true;
  }

  static std::string Digits(const Conversion& conversion, ULONGLONG value) {
    const bool hex = conversion.letter == 'x' || conversion.letter == 'X';
    const bool octal = conversion.letter == 'o';
    std::string digits = fmt::format(fmt::runtime(hex ? "{:x}" : octal ? "{:o}" : "{}"), value);
    if (conversion.precision == 0 && value == 0) digits.clear();
    if (int(digits.size()) < conversion.precision)
      digits.insert(0, std::size_t(conversion.precision) - digits.size(), '0');
    if (Has(conversion, _T('#')) && octal && !digits.starts_with('0')) digits.insert(0, 1, '0');
    if (Has(conversion, _T('#')) && hex && value != 0) digits.insert(0, "0x");
    if (conversion.letter == 'X') std::transform(digits.begin(), digits.end(), digits.begin(), UpperHex);
    return digits;
  }

  static char UpperHex(char character) {
    return (character >= 'a' && character <= 'f') || character == 'x' ? char(character - 32) : character;
  }

  bool PrintReal(const Conversion& conversion, const FormatArgument& argument) {
    if (argument.kind != FormatArgument::Kind::kReal) return false;
    std::string specification = "%";
    for (const TCHAR flag : {_T('+'), _T(' '), _T('#')})
      if (Has(conversion, flag)) specification += char(flag);
    if (conversion.precision >= 0) specification += '.' + std::to_string(conversion.precision);
    AppendNumber(conversion, fmt::sprintf(specification + conversion.letter, argument.real),
                 std::isfinite(argument.real));
    return true;
  }

  bool PrintText(const Conversion& conversion, const FormatArgument& argument) {
    if (argument.kind == FormatArgument::Kind::kText) {
      AppendPadded(conversion, argument.text);
    } else if (argument.kind == FormatArgument::Kind::kNarrow) {
      AppendPadded(conversion, FromUtf8(argument.narrow).View());
    } else {
      return false;
    }
    return true;
  }

  bool PrintCharacter(const Conversion& conversion, const FormatArgument& argument) {
    if (argument.kind > FormatArgument::Kind::kUnsigned && argument.kind != FormatArgument::Kind::kCharacter)
      return false;
    const TCHAR unit = TCHAR(argument.integer);
    AppendPadded({conversion.flags, conversion.width, -1, 'c'}, {&unit, 1});
    return true;
  }

  bool PrintPointer(const FormatArgument& argument) {
    if (argument.kind != FormatArgument::Kind::kPointer) return false;
    const std::string digits = fmt::format("{:016X}", argument.integer);
    out_.append(digits.begin(), digits.end());
    return true;
  }

  bool Print(const Conversion& conversion) {
    constexpr std::string_view kLetters = "diuoxXsScCfFeEgGaAp";
    if (conversion.letter == '%') {
      out_ += _T('%');
      return true;
    }
    if (next_ == end_ || kLetters.find(conversion.letter) == std::string_view::npos) return false;
    const FormatArgument& argument = *next_++;
    switch (conversion.letter) {
      case 'd':
      case 'i':
      case 'u':
      case 'o':
      case 'x':
      case 'X': return PrintInteger(conversion, argument);
      case 's':
      case 'S': return PrintText(conversion, argument);
      case 'c':
      case 'C': return PrintCharacter(conversion, argument);
      case 'p': return PrintPointer(argument);
      default: return PrintReal(conversion, argument);
    }
  }

  TextView format_;
  std::size_t at_ = 0;
  const FormatArgument* next_;
  const FormatArgument* end_;
  Text out_;
};

}  // namespace

void CString::AppendFormatted(LPCTSTR format, std::initializer_list<FormatArgument> arguments) {
  const Text text = Formatter(ViewOf(format), arguments).Run();
  Append(text.data(), int(std::min<std::size_t>(text.size(), std::numeric_limits<int>::max())));
}

bool CString::LoadString(UINT id) { return LoadStringFromChain(id, *this); }

bool CString::LoadString(HINSTANCE module, UINT id) { return LoadStringFromModule(module, id, *this); }
