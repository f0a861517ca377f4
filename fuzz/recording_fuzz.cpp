// Reads any bytes as the binary file of a recording. What can be read is written again, and must be the same bytes,
// apart from the bytes of texts, which are written as zeros.
#include <cstdlib>
#include <string_view>

#include "share/display/recording_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(bytes), size);
  QFToolpathDisplayItems items;
  DisplayRecordingFailure failure;
  if (!ReadDisplayRecording(input, items, failure)) {
    if (failure.byte > size || failure.reason.empty()) std::abort();
    return 0;
  }
  std::string binary, text;
  bool texts = false;
  for (const auto& item : items) {
    item->Write(binary, text);
    texts = texts || item->m_nType == QFeDisplayText;
  }
  if (binary.size() + sizeof(ULONGLONG) != size) std::abort();
  if (!texts && binary != input.substr(sizeof(ULONGLONG))) std::abort();
  return 0;
}
