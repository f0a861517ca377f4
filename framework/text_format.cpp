// CString::Format: walks a printf format, lets {fmt} print each number and lays text in itself, so that widths and
// precisions of text count UTF-16 units.
#include <fmt/printf.h>

#include <algorithm>
#include <limits>

#include "framework/resources.h"
#include "framework/text.h"

namespace {

constexpr int kMaximumField = 1 << 20;  // the largest width or precision that is honoured

// One conversion of a format, from the % to its letter.
struct Conversion {
  std::u16string_view flags;
  int width = 0;
  int precision = -1;
  char letter = 0;
};

class Formatter {
 public:
  Formatter(std::u16string_view format, std::initializer_list<FormatArgument> arguments)
      : format_(format), next_(arguments.begin()), end_(arguments.end()) {}

  std::u16string Run() {
    while (at_ < format_.size()) {
      const std::size_t percent = std::min(format_.find(u'%', at_), format_.size());
      out_.append(format_, at_, percent - at_);
      at_ = percent;
      if (at_ == format_.size()) break;
      const auto* first = next_;
      Conversion conversion;
      if (!Parse(conversion) || !Print(conversion)) {
        next_ = first;  // left standing as text
        out_.append(format_, percent, at_ - percent);
      }
    }
    return std::move(out_);
  }

 private:
  char16_t Peek() const { return at_ < format_.size() ? format_[at_] : u'\0'; }

  bool Number(int& number) {
    if (Peek() == u'*') {
      ++at_;
      if (next_ == end_ || next_->kind > FormatArgument::Kind::kUnsigned) return false;
      number = int(std::clamp<LONGLONG>(LONGLONG(next_++->integer), -kMaximumField, kMaximumField));
      return true;
    }
    number = 0;
    for (; Peek() >= u'0' && Peek() <= u'9'; ++at_) number = std::min(number * 10 + (Peek() - u'0'), kMaximumField);
    return true;
  }

  bool Parse(Conversion& conversion) {
    const std::size_t flags = ++at_;
    at_ = std::min(format_.find_first_not_of(u"-+ #0", at_), format_.size());
    conversion.flags = format_.substr(flags, at_ - flags);
    if (!Number(conversion.width)) return false;
    if (Peek() == u'.') {
      ++at_;
      if (!Number(conversion.precision)) return false;
    }
    for (;;) {
      if (format_.substr(at_, 3) == u"I64" || format_.substr(at_, 3) == u"I32") {
        at_ += 3;
      } else if (Peek() != 0 && std::u16string_view(u"hlLjztqw").find(Peek()) != std::u16string_view::npos) {
        ++at_;
      } else {
        break;
      }
    }
    if (Peek() == 0 || Peek() >= 0x80) return false;
    conversion.letter = char(format_[at_++]);
    return true;
  }

  // The conversion's own format for {fmt}, ending in the given letter.
  static std::string Specification(const Conversion& conversion, char letter) {
    std::string text = "%";
    for (const char16_t flag : conversion.flags) text += char(flag);
    if (conversion.width < 0) text += '-';
    if (conversion.width != 0) text += std::to_string(std::abs(conversion.width));
    if (conversion.precision >= 0) text += '.' + std::to_string(conversion.precision);
    return text + letter;
  }

  void Narrow(const std::string& text) { out_.append(text.begin(), text.end()); }

  void Lay(const Conversion& conversion, std::u16string_view text) {
    if (conversion.precision >= 0) text = text.substr(0, std::size_t(conversion.precision));
    const bool left = conversion.width < 0 || conversion.flags.find(u'-') != std::u16string_view::npos;
    const std::size_t width = std::size_t(std::abs(conversion.width));
    const std::size_t blanks = width > text.size() ? width - text.size() : 0;
    if (!left) out_.append(blanks, u' ');
    out_.append(text);
    if (left) out_.append(blanks, u' ');
  }

  bool PrintInteger(const Conversion& conversion) {
    using Kind = FormatArgument::Kind;
    const FormatArgument& argument = *next_++;
    if (argument.kind == Kind::kReal || argument.kind == Kind::kText || argument.kind == Kind::kNarrow) return false;
    const bool isSigned = conversion.letter == 'd' || conversion.letter == 'i';
    const int unused = 64 - argument.bytes * 8;
    const LONGLONG asSigned = LONGLONG(argument.integer << unused) >> unused;
    const ULONGLONG asUnsigned = argument.integer << unused >> unused;
    if (isSigned) {
      Narrow(fmt::sprintf(Specification(conversion, 'd'),
                          argument.kind == Kind::kSigned ? asSigned : LONGLONG(asUnsigned)));
    } else {
      Narrow(fmt::sprintf(Specification(conversion, conversion.letter), asUnsigned));
    }
    return true;
  }

  bool PrintText(const Conversion& conversion) {
    const FormatArgument& argument = *next_++;
    if (argument.kind == FormatArgument::Kind::kText) {
      Lay(conversion, argument.text);
    } else if (argument.kind == FormatArgument::Kind::kNarrow) {
      Lay(conversion, FromUtf8(argument.narrow).View());
    } else {
      return false;
    }
    return true;
  }

  bool Print(const Conversion& conversion) {
    if (conversion.letter == '%') {
      out_ += u'%';
      return true;
    }
    if (next_ == end_) return false;
    switch (conversion.letter) {
      case 'd':
      case 'i':
      case 'u':
      case 'o':
      case 'x':
      case 'X': return PrintInteger(conversion);
      case 's':
      case 'S': return PrintText(conversion);
      case 'c':
      case 'C': {
        if (next_->kind > FormatArgument::Kind::kUnsigned && next_->kind != FormatArgument::Kind::kCharacter)
          return false;
        const char16_t unit = char16_t(next_++->integer);
        Lay({conversion.flags, conversion.width, -1, 'c'}, {&unit, 1});
        return true;
      }
      case 'f':
      case 'F':
      case 'e':
      case 'E':
      case 'g':
      case 'G':
      case 'a':
      case 'A':
        if (next_->kind != FormatArgument::Kind::kReal) return false;
        Narrow(fmt::sprintf(Specification(conversion, conversion.letter), next_++->real));
        return true;
      case 'p':
        if (next_->kind != FormatArgument::Kind::kPointer) return false;
        Narrow(fmt::sprintf("%016X", next_++->integer));
        return true;
      default: return false;
    }
  }

  std::u16string_view format_;
  std::size_t at_ = 0;
  const FormatArgument* next_;
  const FormatArgument* end_;
  std::u16string out_;
};

}  // namespace

void CString::AppendFormatted(LPCTSTR format, std::initializer_list<FormatArgument> arguments) {
  const std::u16string text = Formatter(ViewOf(format), arguments).Run();
  Append(text.data(), int(std::min<std::size_t>(text.size(), std::numeric_limits<int>::max())));
}

bool CString::LoadString(UINT id) { return LoadStringFromChain(id, *this); }

bool CString::LoadString(HINSTANCE module, UINT id) { return LoadStringFromModule(module, id, *this); }
