// CException, the root of the exceptions: the archive's, the file's and the database's. Everything else tells failure
// by its result.
//
// Both are thrown and caught by value or reference, never by pointer; nobody deletes one.
#pragma once

#include <exception>
#include <string>

#include "framework/text.h"

class KVSHARE_API CException : public std::exception {
 public:
  // What went wrong and with which file, one line in English, for a log.
  CString GetErrorMessage() const { return FromUtf8(message_); }
  // Shows that line in a message box (framework/message_box.h).
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
