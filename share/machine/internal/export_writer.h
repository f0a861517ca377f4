// The text of an export while it grows: pieces appended to one buffer, numbers exactly as printf writes them with
// "%d" and "%.3f", whatever locale the process runs in.
//
// Inside this folder only.
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
