#include "share/machine/internal/export_writer.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace kvmachine {
namespace {

constexpr int kMantissaBits = 52;
constexpr int kExponentBias = 1075;  // for a double written as integer mantissa times a power of two
constexpr std::uint64_t kHiddenBit = std::uint64_t{1} << kMantissaBits;

// The absolute value of a double below 2^53 in thousandths, rounded to nearest, ties to even. The result is exact:
// mantissa * 1000 fits in 64 bits, and the bits shifted out decide the rounding.
std::uint64_t Thousandths(std::uint64_t bits) {
  const int exponent = int(bits >> kMantissaBits & 0x7FF);
  const std::uint64_t fraction = bits & (kHiddenBit - 1);
  const std::uint64_t scaled = (exponent ? fraction | kHiddenBit : fraction) * 1000;
  const int shift = kExponentBias - (exponent ? exponent : 1);
  if (shift <= 0) return scaled;
  if (shift > 63) return 0;  // below half a thousandth
  const std::uint64_t whole = scaled >> shift;
  const std::uint64_t rest = scaled & ((std::uint64_t{1} << shift) - 1);
  const std::uint64_t half = std::uint64_t{1} << (shift - 1);
  return whole + (rest > half || (rest == half && (whole & 1)) ? 1 : 0);
}

}  // namespace

ExportWriter& ExportWriter::operator<<(int number) {
  char digits[12];
  out_.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
  return *this;
}

ExportWriter& ExportWriter::operator<<(double real) {
  constexpr double kExact = 9007199254740992.0;  // 2^53
  char digits[400];
  if (!(std::fabs(real) < kExact)) {
    out_.append(digits, std::to_chars(digits, digits + sizeof digits, real, std::chars_format::fixed, 3).ptr);
    return *this;
  }
  const std::uint64_t thousandths = Thousandths(std::bit_cast<std::uint64_t>(real));
  char* at = digits;
  if (std::signbit(real)) *at++ = '-';
  at = std::to_chars(at, digits + sizeof digits, thousandths / 1000).ptr;
  const auto rest = unsigned(thousandths % 1000);
  *at++ = '.';
  *at++ = char('0' + rest / 100);
  *at++ = char('0' + rest / 10 % 10);
  *at++ = char('0' + rest % 10);
  out_.append(digits, at);
  return *this;
}

}  // namespace kvmachine
