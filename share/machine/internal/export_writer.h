// Appends texts and numbers of an export to a string. Numbers are formatted exactly as printf does with "%d" and "%.3f"
// in the C locale, whatever the locale of the process is.
#pragma once

#include <string>
#include <string_view>

#include "framework/text.h"

namespace kvmachine {

class ExportWriter {
 public:
  explicit ExportWriter(std::string& out) : out_(out) {}

  ExportWriter& operator<<(std::string_view text) {
    out_.append(text);
    return *this;
  }
  template <std::size_t kSize>
  ExportWriter& operator<<(const char (&literal)[kSize]) {
    return *this << std::string_view(literal, kSize - 1);
  }
  ExportWriter& operator<<(const CString& text) {
    AppendUtf8(out_, text.View());
    return *this;
  }
  ExportWriter& operator<<(int number);
  ExportWriter& operator<<(double real);

 private:
  std::string& out_;
};

}  // namespace kvmachine
