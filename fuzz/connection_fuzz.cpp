// Reads any text as a connection string, as a path and as a password. A string that is not refused must have only known
// keys for a reader of its own, and nothing in a path or password may add one.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "companions/database/connection_strings.h"

namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

// The keys in lower case, as a driver manager finds them: a value in braces ends at the first single closing brace.
std::vector<std::string> Keys(std::string_view text) {
  std::vector<std::string> keys;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t sign = std::min(text.find('=', at), text.size());
    std::string key(text.substr(at, sign - at));
    std::erase_if(key, [](char c) { return c == ' ' || c == ';'; });
    std::transform(key.begin(), key.end(), key.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; });
    if (!key.empty()) keys.push_back(key);
    at = std::min(text.find_first_not_of(' ', sign + 1), text.size());
    if (text.substr(at).starts_with('{')) {
      for (++at; at < text.size() && (text[at] != '}' || text.substr(at).starts_with("}}")); ++at)
        at += text[at] == '}';
    }
    at = std::min(text.find(';', at), text.size());
  }
  return keys;
}

void RequireKnown(const ConnectionPieces& pieces) {
  constexpr std::string_view kKnown =
      " driver dsn database dbq fksupport server port uid pwd password trusted_connection connectiontimeout "
      "tds_version "
      "clientcharset encrypt trustservercertificate app wsid language ";
  std::vector<std::string> keys = Keys(ToUtf8(pieces.Text()));
  for (const std::string& key : keys) Require(kKnown.find(" " + key + " ") != kKnown.npos);
  std::sort(keys.begin(), keys.end());
  Require(std::adjacent_find(keys.begin(), keys.end()) == keys.end());
}

void RequireFile(const CString& connection, const CString& path, std::size_t keys) {
  const ConnectionPieces pieces(connection);
  if (!pieces.Refusal().empty()) return;
  Require(path.Find(_T(';')) < 0 && Keys(ToUtf8(pieces.Text())).size() == keys);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const CString text = FromUtf8({reinterpret_cast<const char*>(bytes), size});
  const ConnectionPieces pieces(text);
  const ConnectionPieces again(pieces.Text());
  if (pieces.Refusal().empty()) {
    RequireKnown(pieces);
    Require(again.Refusal().empty() && again.Text() == pieces.Text());
  }
  RequireFile(SQLiteConnection(text), text, 3);
  RequireFile(AccessConnection(text), text, 2);
  const CString server = ServerConnection(_T("s"), _T("d"), _T("u"), text);
  const CString shown = ShownTarget(server);
  Require(shown == _T("SERVER=s;DATABASE=d") || server.GetLength() > ConnectionPieces::kMostUnits);
  if (ConnectionPieces(server).Refusal().empty()) RequireKnown(ConnectionPieces(server));
  return 0;
}
