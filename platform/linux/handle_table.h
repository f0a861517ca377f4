// The table behind handles: numbers to shared objects.
#pragma once

#include <memory>

#include "platform/errors.h"

class HandleObject {
 public:
  HandleObject() = default;
  virtual ~HandleObject() = default;
  HandleObject(const HandleObject&) = delete;
  HandleObject& operator=(const HandleObject&) = delete;
};

HANDLE AddHandle(std::shared_ptr<HandleObject> object);

// Null, with the last status set, if the handle names nothing.
std::shared_ptr<HandleObject> FindHandleObject(HANDLE handle);

// The object behind the handle if it is of that kind; else null, with the last status set.
template <class Object>
std::shared_ptr<Object> FindHandle(HANDLE handle) {
  auto object = std::dynamic_pointer_cast<Object>(FindHandleObject(handle));
  if (!object) SetLastError(ERROR_INVALID_HANDLE);
  return object;
}
