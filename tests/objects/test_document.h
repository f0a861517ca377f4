// TestDocument, the active document as long as it exists. It answers the core messages that these tests need and gives
// out ids.
#pragma once

#include "share/objects/object.h"
#include "tests/registered.h"

namespace kvtest {

class TestDocument : public QFObject {
 public:
  explicit TestDocument(float readStorageUnits = 0) : units(readStorageUnits) {
    active_ = this;
    Register({.nextId = [] { return active_->nextId++; }, .document = []() -> QFObject* { return active_; }});
  }
  ~TestDocument() override {
    active_ = nullptr;
    Register({});
  }

  int SendQFCoreMessage(QF_CORE_MESSAGE_ID message, ULONGLONG argument, LONGLONG) override {
    auto& value = *reinterpret_cast<float*>(std::uintptr_t(argument));
    if (message == QF_CORE_GET_READ_STORAGE_UNITS) value = units;
    if (message == QF_CORE_SET_READ_STORAGE_UNITS) units = value;
    return message == QF_CORE_GET_READ_STORAGE_UNITS || message == QF_CORE_SET_READ_STORAGE_UNITS;
  }

  float units;
  unsigned long nextId = 1;

 private:
  inline static TestDocument* active_ = nullptr;
};

}  // namespace kvtest
