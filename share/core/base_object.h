// QFBaseObject, the root of everything of the product that is kept in a document: nodes, settings, histories.
//
// It has no fields. Its record in an archive is one class record, which documents up to storage version 6.1 lack.
#pragma once

#include <cstdio>

#include "framework/object.h"

class KVSHARE_API QFBaseObject : public CObject {
  DECLARE_SERIAL(QFBaseObject)

 public:
  // Writes or reads the class record of this level. On loading, a document of an old storage version (see
  // HasBaseObjectRecord) has none, and no byte is read. Raises what the archive raises.
  void Serialize(CArchive& ar) override;

  // The slots of every class below, in this order.

  // The class's name for texts. "QFBaseObject" unless a class says otherwise.
  virtual CString GetClassNameW();
  // Prints the object's fields for support staff; nothing here. A null file is left alone.
  virtual void DumpData(FILE* file);
  // Called once the whole document is in, for a class that has asked for it; does nothing here.
  virtual void OnPostLoadFromStorageNotify();
  // The class under whose name the object's id is counted: its own run-time class unless a class says otherwise.
  virtual CRuntimeClass* GetRuntimeClassForAutoIndexing();

 protected:
  QFBaseObject() = default;
};

// Whether a document of that storage version holds a class record for QFBaseObject: it does if the version's absolute
// value is above 6.1, within RESABS.
KVSHARE_API bool HasBaseObjectRecord(float readStorageUnits);
