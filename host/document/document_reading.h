// DocumentReading, the state that a loader and HostDocument::Serialize share while a document is read: Serialize gets
// only the archive. The document finds it as the current one of its thread.
#pragma once

#include <optional>
#include <string>

#include "framework/archive.h"

namespace kestrova {

// The fault that ended a reading.
struct DocumentFault {
  std::string what;       // text of the exception
  ULONGLONG offset = 0;   // byte position of the reading
  bool isSchema = false;  // a class has a later schema
};

class DocumentReading {
 public:
  // The part that is read now.
  enum class Part { kRoot, kFields, kIndexer, kClasses, kNodes, kEnd };

  // With `salvaging` the document keeps the intact nodes before a fault, and throws nothing.
  explicit DocumentReading(bool salvaging) : salvage(salvaging), outer_(t_current) { t_current = this; }
  ~DocumentReading() { t_current = outer_; }
  DocumentReading(const DocumentReading&) = delete;
  DocumentReading& operator=(const DocumentReading&) = delete;

  // The innermost reading of this thread; null if there is none.
  static DocumentReading* Current() { return t_current; }

  // Records the first fault; later ones are ignored. Call it in the handler of the failure, while the archive is open.
  // Raises std::bad_alloc again: memory that is missing is no fault of the file.
  void NoteFault(const CArchive& ar, const std::exception& failure);

  const bool salvage;
  DWORD numbersToSkip = 0;  // of the archive, before the table of nodes: of objects that are not read
  Part part = Part::kRoot;
  DWORD promised = 0;        // number of nodes in the document's table
  DWORD whole = 0;           // number of intact nodes, from the first one on
  std::string partialClass;  // class of the node that was read at the fault
  std::optional<DocumentFault> fault;

 private:
  inline static thread_local constinit DocumentReading* t_current = nullptr;
  DocumentReading* outer_;
};

}  // namespace kestrova
