// Product paths are the system's own paths here; only the encoding changes.
#include "platform/paths.h"

#include <algorithm>

#include "platform/utf8.h"

namespace {

// Whether the component at the end of the path can be looked up: it is a name, not a drive, a share or a step.
bool IsName(TextView component) {
  return !component.empty() && component != L"." && component != L".." && component.back() != L':' &&
         component.find_first_of(L"*?") == component.npos;
}

}  // namespace

// Existing components get the case that they are stored with.
std::string SystemPathFromProduct(LPCWSTR path) {
  if (!path) return {};
  Text text = path;
  std::replace(text.begin(), text.end(), L'/', L'\\');
  std::size_t begin = 0;
  if (text.starts_with(L"\\\\")) begin = text.find(L'\\', text.find(L'\\', 2) + 1);  // the server and its share
  while (begin < text.size()) {
    const std::size_t end = std::min(text.find(L'\\', begin), text.size());
    const TextView component = TextView(text).substr(begin, end - begin);
    WIN32_FIND_DATAW facts;
    if (IsName(component)) {
      const HANDLE found = FindFirstFileW(text.substr(0, end).c_str(), &facts);
      if (found == INVALID_HANDLE_VALUE) break;
      FindClose(found);
      if (std::size(component) == TextView(facts.cFileName).size())  // not the long form of a short name
        text.replace(begin, component.size(), facts.cFileName);
    }
    begin = end + 1;
  }
  return Utf8FromWide(text);
}

Text ProductPathFromSystem(std::string_view path) {
  Text text = WideFromUtf8(path);
  std::replace(text.begin(), text.end(), L'/', L'\\');
  return text;
}
