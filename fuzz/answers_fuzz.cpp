// Parses any text as a file of answers to boxes.
#include "platform/answers.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const BoxAnswers parsed = ParseBoxAnswers({reinterpret_cast<const char*>(bytes), size});
  for (const BoxAnswer& answer : parsed.answers)
    if (answer.expected.empty() || answer.presses.empty() || answer.line < 1) __builtin_trap();
  return 0;
}
