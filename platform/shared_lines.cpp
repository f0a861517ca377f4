// SharedLines, on the PrivateFile of each system.
#include "platform/shared_lines.h"

#include <algorithm>

#include "platform/errors.h"
#include "platform/private_file.h"

namespace {

constexpr int kMostWait_ms = 2000;
constexpr std::size_t kBlock = 1 << 16;

// The file's size without an unfinished line at its end, which a killed writer or a power failure may leave.
LONG WholeLines(const PrivateFile& file, ULONGLONG size, ULONGLONG& whole) {
  std::string block;
  for (whole = size; whole > 0; whole -= block.size()) {
    // A whole last line needs only its end.
    const ULONGLONG wanted = whole == size ? 1 : std::min<ULONGLONG>(whole, kBlock);
    block.resize(std::size_t(wanted));
    if (const LONG status = file.Read(whole - wanted, block)) return status;
    if (block.size() != wanted) return ERROR_IO_DEVICE;
    const std::size_t end = block.rfind('\n');
    if (end == block.npos) continue;
    whole -= block.size() - end - 1;
    break;
  }
  return ERROR_SUCCESS;
}

// Opens the file and removes an unfinished line. The end of a file of more than `most` bytes, which is none of ours, is
// not looked at.
LONG OpenWhole(PrivateFile& file, const Text& path, bool create, ULONGLONG most, ULONGLONG& whole) {
  ULONGLONG size = 0;
  LONG status = file.Open(path, create);
  if (status == ERROR_SUCCESS) status = file.GetSize(size);
  whole = size;
  if (status != ERROR_SUCCESS || size > most) return status;
  status = WholeLines(file, size, whole);
  return status == ERROR_SUCCESS && whole < size ? file.SetSize(whole) : status;
}

// Writes the line at the end. A line that doesn't fit on the disk is taken back.
LONG AppendTo(PrivateFile& file, ULONGLONG end, std::string_view line) {
  const LONG status = file.Write(end, line);
  if (status != ERROR_SUCCESS) file.SetSize(end);
  return status;
}

// Appends the whole lines of a file to the text.
LONG AppendLinesOf(const Text& path, ULONGLONG most, std::string& lines) {
  PrivateFile file;
  ULONGLONG whole = 0;
  LONG status = OpenWhole(file, path, /*create=*/false, most, whole);
  if (status == ERROR_FILE_NOT_FOUND) return ERROR_SUCCESS;
  if (status == ERROR_SUCCESS && whole > most) status = ERROR_FILE_TOO_LARGE;
  if (status != ERROR_SUCCESS) return status;
  std::string text(std::size_t(whole), 0);
  status = file.Read(0, text);
  lines += text;
  return status;
}

}  // namespace

SharedLines::SharedLines(const Text& folder, TextView name, ULONGLONG mostBytes) : most_(mostBytes) {
  if (folder.empty()) return;
  const Text stem = folder + Text(name);
  file_ = stem + _T(".jsonl");
  older_ = stem + _T(".old.jsonl");
  lock_ = stem + _T(".lock");
}

LONG SharedLines::Append(std::string_view text) const {
  const std::string line = std::string(text) + '\n';
  if (line.size() > most_) return ERROR_FILE_TOO_LARGE;
  PrivateFile lock;
  LONG status = lock.Open(lock_, /*create=*/true);
  if (status == ERROR_SUCCESS) status = lock.Lock(kMostWait_ms);
  if (status != ERROR_SUCCESS) return status;
  PrivateFile file;
  ULONGLONG end = 0;
  status = OpenWhole(file, file_, /*create=*/true, most_, end);
  if (status == ERROR_SUCCESS && end + line.size() > most_) {
    file.Close();
    status = PrivateFile::Rename(file_, older_);
    if (status == ERROR_SUCCESS) status = file.Open(file_, /*create=*/true);
    end = 0;
  }
  return status == ERROR_SUCCESS ? AppendTo(file, end, line) : status;
}

LONG SharedLines::Read(std::string& lines) const {
  lines.clear();
  PrivateFile lock;
  LONG status = lock.Open(lock_, /*create=*/false);
  if (status == ERROR_FILE_NOT_FOUND || status == ERROR_PATH_NOT_FOUND) return ERROR_SUCCESS;
  if (status == ERROR_SUCCESS) status = lock.Lock(kMostWait_ms);
  if (status == ERROR_SUCCESS) status = AppendLinesOf(older_, most_, lines);
  if (status == ERROR_SUCCESS) status = AppendLinesOf(file_, most_, lines);
  return status;
}

LONG SharedLines::Remove() const {
  PrivateFile lock;
  LONG status = lock.Open(lock_, /*create=*/false);
  if (status == ERROR_FILE_NOT_FOUND || status == ERROR_PATH_NOT_FOUND) return ERROR_SUCCESS;
  if (status == ERROR_SUCCESS) status = lock.Lock(kMostWait_ms);
  for (const Text& path : {older_, file_}) {
    if (status == ERROR_SUCCESS) status = PrivateFile::Remove(path);
    if (status == ERROR_FILE_NOT_FOUND) status = ERROR_SUCCESS;
  }
  return status;
}
