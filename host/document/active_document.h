// ActiveDocument makes a document the one that the library's callbacks work on. Main thread only.
#pragma once

#include <utility>

namespace kestrova {

class HostDocument;

// The document is active while this object lives; the destructor makes the previous one active again. Null: no document
// is active. The caller keeps the document.
class ActiveDocument {
 public:
  explicit ActiveDocument(HostDocument* document) : previous_(std::exchange(s_active, document)) {}
  ~ActiveDocument() { s_active = previous_; }
  ActiveDocument(const ActiveDocument&) = delete;
  ActiveDocument& operator=(const ActiveDocument&) = delete;

  // The active document; null if there is none.
  static HostDocument* Get() { return s_active; }

 private:
  inline static constinit HostDocument* s_active = nullptr;
  HostDocument* previous_;
};

}  // namespace kestrova
