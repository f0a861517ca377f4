// The two forms of each item.
#include "share/display/display_items.h"

#include <atomic>
#include <bit>
#include <charconv>

namespace {

constexpr int kDigits = 6;
constexpr DWORD kCoordinates = 3;

// The style of the last item that was written; -1 before the first item of the process.
constinit std::atomic<int> g_style = -1;

template <class Unsigned>
void AppendBytes(std::string& out, Unsigned value) {
  char bytes[sizeof value];
  for (char& byte : bytes) {
    byte = char(value & 0xFF);
    value >>= 8;
  }
  out.append(bytes, sizeof bytes);
}
void AppendInteger(std::string& out, DWORD value) { AppendBytes(out, value); }
void AppendInteger(std::string& out, int value) { AppendBytes(out, DWORD(value)); }
void AppendReal(std::string& out, double value) { AppendBytes(out, std::bit_cast<ULONGLONG>(value)); }

template <class Integer>
void AppendNumber(std::string& text, Integer value) {
  char digits[24];
  text.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}
void AppendNumber(std::string& text, double value) {
  char digits[40];
  text.append(digits, std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, kDigits).ptr);
}

// A line of the text form.
template <class Integer>
void AppendField(std::string& text, const char* label, Integer value) {
  text += label;
  AppendNumber(text, value);
  text += '\n';
}

// A position or a direction.
template <class Point>
void WritePoint(const Point& point, std::string& binary, std::string& text) {
  AppendInteger(binary, kCoordinates);
  const double coordinates[] = {point.x(), point.y(), point.z()};
  for (const double& coordinate : coordinates) {
    AppendReal(binary, coordinate);
    AppendNumber(text, coordinate);
    text += &coordinate == coordinates + 2 ? '\n' : ' ';
  }
}

// Writes exactly `count` elements.
template <class Point>
void WriteList(const char* label, const std::vector<Point>& points, std::size_t count, std::string& binary,
               std::string& text) {
  AppendInteger(binary, DWORD(count));
  AppendField(text, label, count);
  for (std::size_t i = 0; i < count; ++i)
    WritePoint(i < points.size() ? points[i] : points.empty() ? Point() : points.back(), binary, text);
}

}  // namespace

QFToolpathDisplayItem::~QFToolpathDisplayItem() = default;

void QFToolpathDisplayItem::Write(std::string& binary, std::string& text) const {
  AppendInteger(binary, m_nType);
  AppendInteger(binary, m_Color);
  AppendInteger(binary, m_bDashed);
  AppendInteger(binary, m_nLineWidth);
  const int dashed = m_bDashed != 0;
  if (g_style.exchange(dashed) != dashed) text += dashed ? "# dashed\n" : "# solid\n";
}

void QFToolpathDisplayFillItem::Write(std::string& binary, std::string& text) const {
  QFToolpathDisplayItem::Write(binary, text);
  AppendInteger(binary, m_bFill);
  AppendInteger(binary, m_bTransparent);
  AppendInteger(binary, m_ColorFill);
  AppendField(text, "m_bFill: ", m_bFill);
  AppendField(text, "m_bTransparent: ", m_bTransparent);
  AppendField(text, "m_ColorFill: ", m_ColorFill);
}

void QFToolpathDisplayLine::Write(std::string& binary, std::string& text) const {
  QFToolpathDisplayItem::Write(binary, text);
  WritePoint(m_StartPos, binary, text);
  WritePoint(m_EndPos, binary, text);
}

void QFToolpathDisplayPolyline::Write(std::string& binary, std::string& text) const {
  QFToolpathDisplayItem::Write(binary, text);
  WriteList("m_PtList size: ", m_PtList, m_PtList.size(), binary, text);
}

void QFToolpathDisplayEllipse::Write(std::string& binary, std::string& text) const {
  QFToolpathDisplayFillItem::Write(binary, text);
  WritePoint(m_stPos, binary, text);
  AppendInteger(binary, m_nPixelHorizontal);
  AppendInteger(binary, m_nPixelVertical);
  AppendField(text, "m_nPixelHorizontal: ", m_nPixelHorizontal);
  AppendField(text, "m_nPixelVertical: ", m_nPixelVertical);
}

void QFToolpathDisplayPolygon::Write(std::string& binary, std::string& text) const {
  QFToolpathDisplayFillItem::Write(binary, text);
  WriteList("m_PtList size: ", m_PtList, m_PtList.size(), binary, text);
}

void QFToolpathDisplayTriangle::Write(std::string& binary, std::string& text) const {
  QFToolpathDisplayFillItem::Write(binary, text);
  WriteList("m_PtList size: ", m_PtList, m_PtList.size(), binary, text);
  WriteList("m_PtNormalList size: ", m_PtNormalList, m_PtList.size(), binary, text);
}

void QFToolpathDisplayText::Write(std::string& binary, std::string& text) const {
  QFToolpathDisplayItem::Write(binary, text);
  WritePoint(m_StartPos, binary, text);
  AppendInteger(binary, m_nCharCount);
  binary.append(m_nCharCount, '\0');
  AppendField(text, "#text_char_count: ", m_nCharCount);
  text += "#text: ";
  AppendUtf8(text, m_Text.View());
  text += '\n';
}
