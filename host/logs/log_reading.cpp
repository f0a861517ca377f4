#include "host/logs/log_reading.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <memory>

#include "host/shell/failure.h"
#include "platform/errors.h"
#include "platform/files.h"

namespace kestrova {

namespace {

constexpr std::size_t kPiece = 1 << 16;
constexpr ULONGLONG kMostTicks = 0xFFFFFFFF;
constexpr std::string_view kEnd = "_End : ";

// Reads a number and the text after it, and removes both.
bool TakeNumber(std::string_view& text, std::string_view after, ULONGLONG& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc()) return false;
  text.remove_prefix(std::size_t(end - text.data()));
  if (!text.starts_with(after)) return false;
  text.remove_prefix(after.size());
  return true;
}

}  // namespace

void ScopeTable::AddLine(std::string_view line) {
  const std::size_t end = line.rfind(kEnd);
  if (end == line.npos) return;
  std::string_view rest = line.substr(end + kEnd.size());
  ULONGLONG minutes = 0, seconds = 0, ticks = 0;
  if (!TakeNumber(rest, " mins, ", minutes) || !TakeNumber(rest, " secs ; Total in MilliSecs: ", seconds) ||
      !TakeNumber(rest, "", ticks) || !rest.empty() || ticks > kMostTicks)
    return;
  const std::string_view name = line.substr(0, end);
  auto found = scopes_.find(name);
  if (found == scopes_.end() && scopes_.size() == kMostNames) {
    ++uncounted_;
    return;
  }
  if (found == scopes_.end()) found = scopes_.emplace(name, ScopeTimes{std::string(name)}).first;
  ScopeTimes& scope = found->second;
  ++scope.count;
  scope.total_ms += ticks;
  scope.longest_ms = std::max(scope.longest_ms, DWORD(ticks));
}

std::vector<ScopeTimes> ScopeTable::Slowest(std::size_t most) const {
  std::vector<ScopeTimes> all;
  for (const auto& [name, scope] : scopes_) all.push_back(scope);
  std::stable_sort(all.begin(), all.end(), [](const auto& a, const auto& b) { return a.total_ms > b.total_ms; });
  all.resize(std::min(all.size(), most));
  return all;
}

std::deque<std::string> ReadLog(const CString& path, std::size_t lastLines, ScopeTable& table) {
  const std::unique_ptr<FILE, int (*)(FILE*)> file(_wfopen(path, _T("rb")), std::fclose);
  const std::string system = SystemPathFromProduct(path);
  if (!file) throw Failure("cannot read " + system + "; check its rights", {.file = system});
  std::deque<std::string> last;
  std::string line;
  const auto finish = [&] {
    table.AddLine(line);
    last.push_back(line);
    if (last.size() > lastLines) last.pop_front();
    line.clear();
  };
  std::vector<char> piece(kPiece);
  while (const std::size_t count = std::fread(piece.data(), 1, piece.size(), file.get())) {
    std::string_view rest(piece.data(), count);
    while (!rest.empty()) {
      const std::size_t end = std::min(rest.find('\n'), rest.size());
      line += rest.substr(0, std::min(end, kMostLineBytes - line.size()));
      if (end < rest.size()) finish();
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
  }
  if (std::ferror(file.get())) throw Failure("cannot read " + system + "; check the disk", {.file = system});
  if (!line.empty()) finish();
  return last;
}

}  // namespace kestrova
