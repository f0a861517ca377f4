#include "desktop/fonts.h"

#include <QFontMetrics>
#include <algorithm>
#include <cstring>

#include "desktop/application.h"

namespace {

constexpr int kDefaultHeight = 16;  // of a line
constexpr int kTallest = 4096;      // pixels
// The families in lfPitchAndFamily.
constexpr int kFamilyBits = 0xF0, kRoman = 0x10, kModern = 0x30, kScript = 0x40, kDecorative = 0x50;

QFont::StyleHint HintOf(BYTE pitchAndFamily) {
  switch (pitchAndFamily & kFamilyBits) {
    case kRoman: return QFont::Serif;
    case kModern: return QFont::Monospace;
    case kScript: return QFont::Cursive;
    case kDecorative: return QFont::Fantasy;
    default: return QFont::SansSerif;
  }
}

void SetHeight(QFont& font, LONG height) {
  if (height < 0) return font.setPixelSize(int(std::min<LONGLONG>(-LONGLONG(height), kTallest)));
  const int wanted = height == 0 ? kDefaultHeight : std::min<int>(height, kTallest);
  font.setPixelSize(wanted);
  const int line = QFontMetrics(font).height();
  if (line > 0) font.setPixelSize(std::max(1, wanted * wanted / line));
}

QFont MakeFont(const LOGFONTW& description) {
  QFont font;
  const char16_t* const end = std::find(description.lfFaceName, description.lfFaceName + LF_FACESIZE, u'\0');
  if (end != description.lfFaceName)
    font.setFamily(QString::fromUtf16(description.lfFaceName, end - description.lfFaceName));
  font.setStyleHint(HintOf(description.lfPitchAndFamily));
  if (end == description.lfFaceName) font.setFamily(font.defaultFamily());
  if (description.lfWeight > 0) font.setWeight(QFont::Weight(std::clamp<LONG>(description.lfWeight, 1, 1000)));
  font.setItalic(description.lfItalic != 0);
  font.setUnderline(description.lfUnderline != 0);
  font.setStrikeOut(description.lfStrikeOut != 0);
  font.setStyleStrategy(description.lfQuality == NONANTIALIASED_QUALITY ? QFont::NoAntialias
                                                                        : QFont::NoSubpixelAntialias);
  SetHeight(font, description.lfHeight);
  return font;
}

}  // namespace

std::optional<QFont> FontFor(const LOGFONTW* description) {
  if (!HasGuiApplication()) return {};
  static constexpr LOGFONTW kDefault = {};
  thread_local LOGFONTW last = {};
  thread_local std::optional<QFont> font;
  const LOGFONTW& wanted = description ? *description : kDefault;
  if (!font || std::memcmp(&wanted, &last, sizeof last) != 0) {
    font = MakeFont(wanted);
    last = wanted;
  }
  return font;
}
