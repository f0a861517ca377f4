// Binary: 80 bytes of any text, the count of triangles (4 bytes), and for each triangle 12 floats (normal, three
// corners) and 2 bytes, little-endian. Text: "solid NAME", for each triangle "facet normal X Y Z outer loop vertex X Y
// Z vertex X Y Z vertex X Y Z endloop endfacet", and "endsolid NAME". The first bytes of a binary file may be "solid"
// too, so a file whose size fits its count is binary.
#include "host/pictures/stl_reader.h"

#include <fmt/format.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace kestrova {
namespace {

constexpr std::size_t kHeaderBytes = 84, kTriangleBytes = 50;

std::uint32_t NumberAt(std::string_view bytes, std::size_t at) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < sizeof value; ++i)
    value |= std::uint32_t{static_cast<unsigned char>(bytes[at + i])} << (8 * i);
  return value;
}

StlPoint PointAt(std::string_view bytes, std::size_t at) {
  const auto coordinate = [&](std::size_t number) { return std::bit_cast<float>(NumberAt(bytes, at + 4 * number)); };
  return {coordinate(0), coordinate(1), coordinate(2)};
}

bool IsFinite(const StlPoint& point) {
  return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
}

constexpr char kTooMany[] = "the file has more triangles than the 5000000 that are read";
constexpr char kNotFinite[] = "a coordinate is not a finite number";

bool ReadBinary(std::string_view bytes, std::vector<StlTriangle>& triangles, StlFailure& failure) {
  const std::size_t count = (bytes.size() - kHeaderBytes) / kTriangleBytes;
  if (count > kMostTriangles) return failure = {kHeaderBytes - 4, 0, kTooMany}, false;
  triangles.reserve(triangles.size() + count);
  for (std::size_t at = kHeaderBytes; at < bytes.size(); at += kTriangleBytes) {
    StlTriangle triangle;
    for (std::size_t corner = 0; corner < 3; ++corner) {
      const std::size_t place = at + 12 * (corner + 1);
      triangle[corner] = PointAt(bytes, place);
      if (!IsFinite(triangle[corner])) return failure = {place, 0, kNotFinite}, false;
    }
    triangles.push_back(triangle);
  }
  return true;
}

// The words of a text file.
class StlText {
 public:
  StlText(std::string_view bytes, StlFailure& failure) : left_(bytes), failure_(failure) {}

  bool IsAtEnd() {
    SkipBlanks();
    return left_.empty();
  }
  // The next word in lower case, without taking it. Words of STL are short.
  bool IsNext(std::string_view word) {
    SkipBlanks();
    if (left_.size() < word.size()) return false;
    for (std::size_t i = 0; i < word.size(); ++i)
      if (Lower(left_[i]) != word[i]) return false;
    return left_.size() == word.size() || IsBlank(left_[word.size()]);
  }
  bool Take(std::string_view word) {
    if (!IsNext(word)) return Fail(fmt::format("\"{}\" is missing", word));
    left_.remove_prefix(word.size());
    return true;
  }
  void SkipLine() {
    const std::size_t end = left_.find('\n');
    left_.remove_prefix(end == std::string_view::npos ? left_.size() : end);
  }
  bool TakeNumber(float& number) {
    SkipBlanks();
    if (left_.starts_with('+')) left_.remove_prefix(1);
    const auto [end, error] = std::from_chars(left_.data(), left_.data() + left_.size(), number);
    const std::size_t size = std::size_t(end - left_.data());
    if (error == std::errc::invalid_argument || (size < left_.size() && !IsBlank(left_[size])))
      return Fail("a number is missing");
    if (error != std::errc() || !std::isfinite(number)) return Fail(kNotFinite);
    left_.remove_prefix(size);
    return true;
  }
  bool TakePoint(StlPoint& point) { return TakeNumber(point.x) && TakeNumber(point.y) && TakeNumber(point.z); }
  bool Fail(const std::string& reason) {
    failure_ = {0, line_, reason};
    return false;
  }

 private:
  static bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
  static char Lower(char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; }
  void SkipBlanks() {
    while (!left_.empty() && IsBlank(left_.front())) {
      line_ += left_.front() == '\n';
      left_.remove_prefix(1);
    }
  }

  std::string_view left_;
  StlFailure& failure_;
  int line_ = 1;
};

// "facet" is taken.
bool ReadFacet(StlText& text, StlTriangle& triangle) {
  StlPoint normal;  // some writers put "nan" here: the words are skipped
  if (!text.Take("normal")) return false;
  if (!text.IsNext("nan") && !text.IsNext("-nan")) {
    if (!text.TakePoint(normal)) return false;
  } else {
    text.SkipLine();
  }
  if (!text.Take("outer") || !text.Take("loop")) return false;
  for (StlPoint& corner : triangle)
    if (!text.Take("vertex") || !text.TakePoint(corner)) return false;
  return text.Take("endloop") && text.Take("endfacet");
}

bool ReadText(std::string_view bytes, std::vector<StlTriangle>& triangles, StlFailure& failure) {
  StlText text(bytes, failure);
  while (!text.IsAtEnd()) {
    if (!text.Take("solid")) return false;
    text.SkipLine();
    while (text.IsNext("facet")) {
      StlTriangle triangle;
      if (triangles.size() >= kMostTriangles) return text.Fail(kTooMany);
      if (!text.Take("facet") || !ReadFacet(text, triangle)) return false;
      triangles.push_back(triangle);
    }
    if (!text.Take("endsolid")) return false;
    text.SkipLine();
  }
  return true;
}

}  // namespace

bool ReadStl(std::string_view bytes, std::vector<StlTriangle>& triangles, StlFailure& failure) {
  failure = {};
  const bool has_header = bytes.size() >= kHeaderBytes;
  const std::uint64_t count = has_header ? NumberAt(bytes, kHeaderBytes - 4) : 0;
  const std::uint64_t size = kHeaderBytes + count * kTriangleBytes;
  if (has_header && bytes.size() == size) return ReadBinary(bytes, triangles, failure);
  StlFailure ignored;
  if (StlText(bytes, ignored).IsNext("solid")) return ReadText(bytes, triangles, failure);
  if (!has_header) {
    failure = {bytes.size(), 0, "the file ends before the first triangle"};
  } else {
    failure = {
        kHeaderBytes - 4, 0,
        fmt::format("{} triangles are announced, which take {} bytes, and the file has {}", count, size, bytes.size())};
  }
  return false;
}

}  // namespace kestrova
