// QFBaseObject: the base class of all objects that a document stores, such as nodes, settings and histories.
//
// It has no fields. In an archive it is one class record, which documents older than storage version 6.1 lack.
#pragma once

#include <cstdio>

#include "framework/object.h"

class KVSHARE_API QFBaseObject : public CObject {
  DECLARE_SERIAL(QFBaseObject)

 public:
  // Writes or reads the class record of this class. Reads nothing while the active document's storage version has no
  // such record (HasBaseObjectRecord). Throws the archive's exceptions.
  void Serialize(CArchive& ar) override;

  // Derived classes override these. Keep their order: existing modules are compiled with it.

  // The name of the class for texts.
  virtual CString GetClassNameW();
  // Prints the fields for support staff. Here it prints nothing. Does nothing for a null file.
  virtual void DumpData(FILE* file);
  // Called after the whole document has been loaded, for objects that have registered for it. Does nothing here.
  virtual void OnPostLoadFromStorageNotify();
  // The class under whose name the object indexer counts the object. Here: the run-time class of the object.
  virtual CRuntimeClass* GetRuntimeClassForAutoIndexing();

 protected:
  QFBaseObject() = default;
};

// Whether documents of that storage version have a class record of QFBaseObject: the version's absolute value is 6.1 or
// more, within RESABS.
KVSHARE_API bool HasBaseObjectRecord(float readStorageUnits);
