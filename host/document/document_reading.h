// What a loader tells a document that is being read, and what the document tells it: an archive hands the document's
// Serialize nothing but itself. One for each reading; it is known to the document by living on the same thread.
#pragma once

#include <optional>
#include <string>

#include "framework/archive.h"

namespace kestrova {

// Why a reading ended ahead of its end.
struct DocumentFault {
  std::string what;      // what the exception said
  ULONGLONG offset = 0;  // the byte at which the reading stood
};

class DocumentReading {
 public:
  // How far the reading has got: what is being read now.
  enum class Part { kRoot, kFields, kIndexer, kClasses, kNodes, kEnd };

  // With salvage the document keeps what came whole ahead of a fault, and raises nothing.
  explicit DocumentReading(bool keepWhatIsWhole) : salvage(keepWhatIsWhole), outer_(t_current) { t_current = this; }
  ~DocumentReading() { t_current = outer_; }
  DocumentReading(const DocumentReading&) = delete;
  DocumentReading& operator=(const DocumentReading&) = delete;

  // The innermost of this thread; null for none.
  static DocumentReading* Current() { return t_current; }

  // To be called while the exception is handled and the archive is open. The first fault stays.
  void NoteFault(const CArchive& ar, const std::exception& failure);

  const bool salvage;
  Part part = Part::kRoot;
  DWORD promised = 0;        // nodes that the document says it has
  DWORD whole = 0;           // of them, from the first: the others did not come, or not whole
  std::string partialClass;  // of the node that was being read at the fault
  std::optional<DocumentFault> fault;

 private:
  inline static thread_local constinit DocumentReading* t_current = nullptr;
  DocumentReading* outer_;
};

}  // namespace kestrova
