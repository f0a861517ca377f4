// CFlaggedError, the mark on a node that the user has to check, for example because a change of stock made it invalid.
// A node that supports the mark owns one and returns it from QFObject::GetFlag; it is used on the node's thread.
// Modules show the mark.
#pragma once

#include <cstdio>

#include "framework/object.h"

// Stored as 32 bits.
enum FlaggedErrorEnum : int {
  FLAGGED_ERROR_NORMAL = 0,
  FLAGGED_ERROR_STOCK = 1,  // a change of stock
};

class KVSHARE_API CFlaggedError : public CObject {
  DECLARE_SERIAL(CFlaggedError)

 public:
  // The flag starts as 0. id is the id of the error's text in the module's resources.
  CFlaggedError(int id, FlaggedErrorEnum type) : m_eFlaggedErrorType(type), m_iErrorStringID(id) {}
  CFlaggedError(const CFlaggedError& other);
  CFlaggedError& operator=(const CFlaggedError& other);
  // Returns a new object with the same five values; the caller owns it.
  CFlaggedError* Clone() const { return new CFlaggedError(*this); }

  int GetFlag() const { return m_bFlag; }
  void SetFlag() { m_bFlag = 1; }
  void ResetFlag() { m_bFlag = 0; }
  FlaggedErrorEnum GetFlagErrorType() const { return m_eFlaggedErrorType; }
  void SetFlagErrorType(FlaggedErrorEnum type) { m_eFlaggedErrorType = type; }
  // Returns the id of the error's text, -1 for no text. It reports nothing, despite its name.
  int ReportError() const { return m_iErrorStringID; }
  void SetErrorString(int id) { m_iErrorStringID = id; }
  // 1 if the user may clear the flag.
  int GetCanClearError() const { return m_bCanClearError; }
  void SetCanClearError(int flag) { m_bCanClearError = flag; }
  // 1 if the node can be edited while the flag is set.
  int GetAllowEditingFlag() const { return m_bAllowEditing; }
  void SetAllowEditingFlag(int flag) { m_bAllowEditing = flag; }

  // The record: class record (see HasFlaggedErrorRecord), flag, type, 32 bits each. The other three values are not
  // stored; loading leaves them as they are, and the owner sets them. Passes the archive's exceptions on.
  void Serialize(CArchive& ar) override;
  // Prints the fields. A null file prints nothing.
  virtual void DumpData(FILE* file);

 protected:
  CFlaggedError() : CFlaggedError(-1, FLAGGED_ERROR_NORMAL) {}

 private:
  FlaggedErrorEnum m_eFlaggedErrorType;
  int m_bFlag = 0;
  int m_iErrorStringID;
  int m_bCanClearError = 0;
  int m_bAllowEditing = 0;
};

// True if documents of that storage version have a class record, and so a type, for CFlaggedError: from version 32.002
// on, 32.002 included.
KVSHARE_API bool HasFlaggedErrorRecord(float readStorageUnits);
