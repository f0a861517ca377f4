#include "share/machine/internal/machine_numbers.h"

#include <charconv>
#include <cstdint>
#include <limits>
#include <string>
#include <system_error>

namespace kvmachine {
namespace {

bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsHexDigit(char c) { return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

const char* SkipBlanks(const char* at, const char* end) {
  while (at != end && IsBlank(*at)) ++at;
  return at;
}

bool OpensHex(const char* at, const char* end) {
  if (end - at < 3 || *at != '0' || (at[1] | 0x20) != 'x') return false;
  return IsHexDigit(at[2]) || (at[2] == '.' && end - at > 3 && IsHexDigit(at[3]));
}

// With an exponent of this size, the number of digits does not matter: no text in memory has that many.
constexpr std::int64_t kFarExponent = std::int64_t{1} << 40;

// Whether a number outside the range of the type is too large (and not too small), from the place of its first nonzero
// digit and its exponent.
bool IsHuge(const char* at, const char* end, bool hex) {
  const char exponentMark = hex ? 'p' : 'e';
  std::int64_t place = 0;
  bool found = false;
  bool fraction = false;
  for (; at != end && (*at | 0x20) != exponentMark; ++at) {
    if (*at == '.') {
      fraction = true;
    } else if (found || *at != '0') {
      found = true;
      if (!fraction) ++place;
    } else if (fraction) {
      --place;
    }
  }
  std::int64_t exponent = 0;
  if (at != end) {
    if (*++at == '+') ++at;
    const auto read = std::from_chars(at, end, exponent);
    if (read.ec == std::errc::result_out_of_range) return *at != '-';
  }
  if (exponent > kFarExponent || exponent < -kFarExponent) return exponent > 0;
  return exponent + (hex ? 4 * place : place) > 0;
}

constexpr double kPowersOfTen[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                   1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

// Reads the usual form: at most 15 digits with or without a point, and no exponent. The digits and the power of ten are
// exact doubles, so the division rounds correctly. Returns null for any other form.
const char* ReadPlain(const char* at, const char* end, double& value) {
  unsigned long long digits = 0;
  int count = 0;
  int fraction = 0;
  for (; at != end && IsDigit(*at); ++at, ++count) digits = digits * 10 + unsigned(*at - '0');
  if (at != end && *at == '.') {
    for (++at; at != end && IsDigit(*at); ++at, ++count, ++fraction) digits = digits * 10 + unsigned(*at - '0');
  }
  if (count == 0 || count > 15 || (at != end && (*at | 0x20) >= 'a' && (*at | 0x20) <= 'z')) return nullptr;
  value = double(digits) / kPowersOfTen[fraction];
  return at;
}

// Reads a number without sign and returns its end; null if there is no number.
template <class Real>
const char* ReadUnsigned(const char* at, const char* end, Real& value) {
  if (at == end || *at == '-' || *at == '+') return nullptr;
  const bool hex = OpensHex(at, end);
  if (hex) at += 2;
  const auto read = std::from_chars(at, end, value, hex ? std::chars_format::hex : std::chars_format::general);
  if (read.ec == std::errc::invalid_argument) return nullptr;
  if (read.ec == std::errc::result_out_of_range) {
    value = IsHuge(at, read.ptr, hex) ? std::numeric_limits<Real>::infinity() : Real(0);
  }
  return read.ptr;
}

template <class Real>
Real ToReal(std::string_view text, std::size_t& used) {
  const char* const begin = text.data();
  const char* const end = begin + text.size();
  const char* at = SkipBlanks(begin, end);
  const bool negative = at != end && *at == '-';
  if (at != end && (*at == '-' || *at == '+')) ++at;
  Real value = 0;
  const char* stop = nullptr;
  if constexpr (std::is_same_v<Real, double>) stop = ReadPlain(at, end, value);
  if (!stop) stop = ReadUnsigned(at, end, value);
  used = stop ? std::size_t(stop - begin) : 0;
  if (!stop) return 0;
  return negative ? -value : value;
}

// NaN is returned unchanged.
double Clamped(double value) { return value < kLeastReal ? kLeastReal : value > kMostReal ? kMostReal : value; }

void Note(NumberNotes* notes, std::string_view text, std::size_t used) {
  if (!notes) return;
  notes->none = used == 0;
  notes->trailing = SkipBlanks(text.data() + used, text.data() + text.size()) != text.data() + text.size();
}

template <class Number, Number (*kRead)(std::string_view, std::size_t&)>
int Scan(std::string_view text, Number (&out)[3], NumberNotes* notes) {
  for (Number& component : out) component = 0;
  int count = 0;
  std::size_t at = 0;
  while (count < 3) {
    std::size_t used = 0;
    const Number value = kRead(text.substr(at), used);
    if (used == 0) break;
    out[count++] = value;
    at += used;
  }
  Note(notes, text, at);
  return count;
}

}  // namespace

double ToDouble(std::string_view text, std::size_t& used) { return ToReal<double>(text, used); }
float ToFloat(std::string_view text, std::size_t& used) { return ToReal<float>(text, used); }

int ToInteger(std::string_view text, std::size_t& used) {
  const char* const end = text.data() + text.size();
  const char* at = SkipBlanks(text.data(), end);
  const bool negative = at != end && *at == '-';
  if (at != end && *at == '+') ++at;
  used = 0;
  if (at == end || (!IsDigit(*at) && !negative)) return 0;
  int value = 0;
  const auto read = std::from_chars(at, end, value);
  if (read.ec == std::errc::invalid_argument) return 0;
  used = std::size_t(read.ptr - text.data());
  if (read.ec == std::errc::result_out_of_range) {
    return negative ? std::numeric_limits<int>::min() : std::numeric_limits<int>::max();
  }
  return value;
}

double ReadReal(std::string_view text, NumberNotes* notes) {
  if (!notes) {  // fast path: nearly every text is a plain number without a comma
    const bool negative = text.starts_with('-');
    double value = 0;
    const char* const end = text.data() + text.size();
    if (ReadPlain(text.data() + negative, end, value) == end) return Clamped(negative ? -value : value);
  }
  std::string repaired;
  const std::size_t comma = text.find(',');
  const bool repair = comma != std::string_view::npos && comma > 0;
  if (repair) {
    repaired = text;
    repaired[comma] = '.';
    text = repaired;
  }
  std::size_t used = 0;
  const double value = ToDouble(text, used);
  Note(notes, text, used);
  if (notes) {
    notes->commaRepaired = repair;
    notes->clamped = value < kLeastReal || value > kMostReal;
  }
  return Clamped(value);
}

int ReadInteger(std::string_view text, NumberNotes* notes) {
  std::size_t used = 0;
  const int value = ToInteger(text, used);
  Note(notes, text, used);
  if (notes) notes->clamped = value == std::numeric_limits<int>::max() || value == std::numeric_limits<int>::min();
  return value;
}

int ScanReals(std::string_view text, float (&out)[3], NumberNotes* notes) {
  return Scan<float, ToFloat>(text, out, notes);
}

int ScanIntegers(std::string_view text, int (&out)[3], NumberNotes* notes) {
  return Scan<int, ToInteger>(text, out, notes);
}

}  // namespace kvmachine
