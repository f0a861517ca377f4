// CFlaggedError, the mark of a node that the user has to look at, such as one that a change of stock has made invalid.
// A node that supports it gives its own from QFObject::GetFlag and owns it. Showing the mark is the module's business.
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
  // The flag is down at first. The id is that of the error's text in the module's resources.
  CFlaggedError(int id, FlaggedErrorEnum type) : m_eFlaggedErrorType(type), m_iErrorStringID(id) {}
  CFlaggedError(const CFlaggedError& other);
  CFlaggedError& operator=(const CFlaggedError& other);
  // A new record with the same five values, owned by the caller.
  CFlaggedError* Clone() const { return new CFlaggedError(*this); }

  int GetFlag() const { return m_bFlag; }
  void SetFlag() { m_bFlag = 1; }
  void ResetFlag() { m_bFlag = 0; }
  FlaggedErrorEnum GetFlagErrorType() const { return m_eFlaggedErrorType; }
  void SetFlagErrorType(FlaggedErrorEnum type) { m_eFlaggedErrorType = type; }
  // The id of the error's text; despite its name nothing is reported. -1 for none.
  int ReportError() const { return m_iErrorStringID; }
  void SetErrorString(int id) { m_iErrorStringID = id; }
  // Whether the user may take the flag down.
  int GetCanClearError() const { return m_bCanClearError; }
  void SetCanClearError(int flag) { m_bCanClearError = flag; }
  // Whether the node can be edited while it is flagged.
  int GetAllowEditingFlag() const { return m_bAllowEditing; }
  void SetAllowEditingFlag(int flag) { m_bAllowEditing = flag; }

  // The class record (see HasFlaggedErrorRecord), the flag, the type. The other three values are not stored: they stay,
  // and the owner sets them again. Raises what the archive raises.
  void Serialize(CArchive& ar) override;
  // Prints the fields; a null file is left alone.
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

// Whether a document of that storage version holds a class record, and with it a type, for CFlaggedError: it does from
// 32.002 on, that number itself included.
KVSHARE_API bool HasFlaggedErrorRecord(float readStorageUnits);
