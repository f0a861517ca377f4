// Lines of a text file, read with the C library.
#include "share/utilities/ascii_file_browse.h"

#include <cstring>

#include "platform/files.h"

namespace {

constexpr std::size_t kMostBytes = 254;  // the most that one call reads
constexpr char kMark[] = "\xEF\xBB\xBF";

}  // namespace

QFAsciFileBrowse::~QFAsciFileBrowse() { Close(); }

void QFAsciFileBrowse::Close() {
  if (m_pFile) std::fclose(m_pFile);
  m_pFile = nullptr;
}

int QFAsciFileBrowse::SetFilePath(const CString& path) {
  if (path == m_Path) return 0;
  Close();
  m_Path = path;
  m_nSize = kUnknown;
  InitialiseFile();
  return 1;
}

int QFAsciFileBrowse::InitialiseFile() {
  if (!m_pFile) m_pFile = _wfopen(m_Path, _T("rb"));
  if (!m_pFile) return 0;
  Rewind();
  return 1;
}

void QFAsciFileBrowse::Rewind() {
  char start[3];
  if (std::fseek(m_pFile, 0, SEEK_SET) != 0) return;  // a pipe has no way back for the bytes looked at
  if (std::fread(start, 1, sizeof start, m_pFile) < sizeof start || std::memcmp(start, kMark, sizeof start) != 0)
    std::rewind(m_pFile);
}

ULONGLONG QFAsciFileBrowse::GetFileSize() {
  WIN32_FILE_ATTRIBUTE_DATA facts;
  if (m_nSize == kUnknown && GetFileAttributesExW(m_Path, GetFileExInfoStandard, &facts) &&
      (facts.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
    m_nSize = ULONGLONG(facts.nFileSizeHigh) << 32 | facts.nFileSizeLow;
  return m_nSize;
}

int QFAsciFileBrowse::GetFirstLine(CString& line) { return InitialiseFile() ? GetNextLine(line) : 0; }

int QFAsciFileBrowse::GetNextLine(CString& line) {
  char bytes[kMostBytes + 1] = {};
  if (!m_pFile || !std::fgets(bytes, sizeof bytes, m_pFile)) return 0;
  if (bytes[kMostBytes - 1] == '\r') {  // keep CR LF together
    const int next = std::getc(m_pFile);
    if (next == '\n') {
      bytes[kMostBytes - 1] = '\n';
    } else if (next != EOF) {
      std::ungetc(next, m_pFile);
    }
  }
  std::size_t end = std::strcspn(bytes, "\t\n");
  if (bytes[end] == '\n' && end > 0 && bytes[end - 1] == '\r') --end;
  line = FromUtf8({bytes, end});
  return 1;
}

int QFAsciFileBrowse::IsEndOfFile() const { return !m_pFile || std::feof(m_pFile) ? 1 : 0; }
