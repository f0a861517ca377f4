// The framework's exceptions: their texts, and the file causes of the platform's status codes.
#include "framework/exception.h"

#include <array>
#include <string_view>

#include "framework/application.h"
#include "framework/archive.h"
#include "framework/file.h"

namespace {

// In the order of the causes.
constexpr std::array<std::string_view, 8> kArchiveTexts = {
    "no failure given",
    "archive failure",
    "write to an archive that is being read",
    "the data ends too early",
    "read from an archive that is being written",
    "reference to an object that the archive does not hold",
    "object of an unknown or unexpected class",
    "object of a version that this one cannot read",
};
constexpr std::array<std::string_view, 15> kFileTexts = {
    "no failure given",
    "file failure",
    "file not found",
    "folder not found or path malformed",
    "too many open files",
    "access denied",
    "file is not open",
    "the current folder can't be removed",
    "no room for another file in the folder",
    "position before the file's start",
    "the device fails",
    "file is in use by another program",
    "range is locked",
    "no room left",
    "end of file",
};

struct StatusCause {
  LONG status;
  int cause;
};
constexpr StatusCause kCauses[] = {
    {ERROR_SUCCESS, CFileException::none},
    {ERROR_FILE_NOT_FOUND, CFileException::fileNotFound},
    {ERROR_PATH_NOT_FOUND, CFileException::badPath},
    {ERROR_INVALID_NAME, CFileException::badPath},
    {ERROR_TOO_MANY_OPEN_FILES, CFileException::tooManyOpenFiles},
    {ERROR_ACCESS_DENIED, CFileException::accessDenied},
    {ERROR_FILE_EXISTS, CFileException::accessDenied},
    {ERROR_ALREADY_EXISTS, CFileException::accessDenied},
    {ERROR_INVALID_HANDLE, CFileException::invalidFile},
    {ERROR_SHARING_VIOLATION, CFileException::sharingViolation},
    {ERROR_DISK_FULL, CFileException::diskFull},
    {ERROR_HANDLE_EOF, CFileException::endOfFile},
    {ERROR_NOT_READY, CFileException::hardIO},
    {ERROR_READ_FAULT, CFileException::hardIO},
    {ERROR_WRITE_FAULT, CFileException::hardIO},
    {ERROR_GEN_FAILURE, CFileException::hardIO},
};

// "FILE: TEXT", or only the text without a file name.
template <std::size_t N>
std::string Message(const std::array<std::string_view, N>& texts, int cause, LPCTSTR fileName) {
  std::string message = fileName ? ToUtf8(TextView(fileName)) : std::string();
  if (!message.empty()) message += ": ";
  const bool known = cause >= 0 && std::size_t(cause) < N;
  return message.append(known ? texts[std::size_t(cause)] : texts[1]);
}

std::string ArchiveMessage(int cause, LPCTSTR fileName, std::string_view detail) {
  std::string message = Message(kArchiveTexts, cause, fileName);
  if (!detail.empty()) message.append(": ").append(detail);
  return message;
}

std::string FileMessage(int cause, LONG osError, LPCTSTR fileName) {
  std::string message = Message(kFileTexts, cause, fileName);
  if (osError > 0) message += " (status " + std::to_string(osError) + ")";
  return message;
}

}  // namespace

CException::~CException() = default;

void CException::ReportError() const { AfxMessageBox(GetErrorMessage()); }

CArchiveException::CArchiveException(int cause, LPCTSTR fileName, std::string_view detail)
    : CException(ArchiveMessage(cause, fileName, detail)), m_cause(cause), m_strFileName(fileName) {}

void AfxThrowArchiveException(int cause, LPCTSTR fileName) { throw CArchiveException(cause, fileName); }

CFileException::CFileException(int cause, LONG osError, LPCTSTR fileName)
    : CException(FileMessage(cause, osError, fileName)), m_cause(cause), m_lOsError(osError), m_strFileName(fileName) {}

int CFileException::OsErrorToException(LONG osError) noexcept {
  for (const StatusCause& row : kCauses)
    if (row.status == osError) return row.cause;
  return genericException;
}
