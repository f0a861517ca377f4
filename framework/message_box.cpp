// Passes the library's messages to the main module's implementation.
#include "framework/message_box.h"

#include <cstdio>
#include <utility>

namespace {

MessageBoxes* g_boxes = nullptr;

// Joins the lines of a text into one.
std::string OneLine(const CString& text) {
  std::string line;
  for (const char c : ToUtf8(text)) {
    const bool blank = c == '\n' || c == '\r' || c == ' ';
    if (!blank) line += c;
    if (blank && !line.empty() && line.back() != ' ') line += ' ';
  }
  return line;
}

}  // namespace

MessageBoxes::~MessageBoxes() = default;

MessageBoxes* SetMessageBoxes(MessageBoxes* boxes) { return std::exchange(g_boxes, boxes); }

CString& MessageBoxCaption() {
  static CString caption(_T("Kestrova"));
  return caption;
}

bool ShowMessageBox(const CString& text) {
  if (g_boxes) return g_boxes->Show(text, MessageBoxCaption());
  std::fprintf(stderr, "%s: %s\n", ToUtf8(MessageBoxCaption()).c_str(), OneLine(text).c_str());
  return false;
}
