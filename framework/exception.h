// CException: the base of all exceptions of the library, which are those of the archive, the file and the database. All
// other failures are return values.
//
// Exceptions are thrown by value and caught by reference, never by pointer. Nobody deletes one.
#pragma once

#include <exception>
#include <string>

#include "framework/text.h"

class KVSHARE_API CException : public std::exception {
 public:
  // The failure and the file's name, one line in English, for a log.
  CString GetErrorMessage() const { return FromUtf8(message_); }
  // Shows this line in a message box (AfxMessageBox).
  void ReportError() const;
  const char* what() const noexcept override { return message_.c_str(); }
  ~CException() override;

 protected:
  explicit CException(std::string message) : message_(std::move(message)) {}
  CException(const CException&) = default;
  CException(CException&&) = default;
  CException& operator=(const CException&) = default;
  CException& operator=(CException&&) = default;

 private:
  std::string message_;
};
