// The handle table: maps handles to shared objects.
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

// An object that ends once and then stays ended, such as a thread or process.
class WaitableObject : public HandleObject {
 public:
  // Waits for the object's end, at most that long, without limit if negative. As poll: above 0 if it has ended, 0 at
  // the time limit, below 0, with errno, on failure.
  virtual int Wait(int milliseconds) const = 0;
};

HANDLE AddHandle(std::shared_ptr<HandleObject> object);

// Returns null and sets the last status for an invalid handle.
std::shared_ptr<HandleObject> FindHandleObject(HANDLE handle);

// The handle's object if it has this type; otherwise null, and the last status is set.
template <class Object>
std::shared_ptr<Object> FindHandle(HANDLE handle) {
  auto object = std::dynamic_pointer_cast<Object>(FindHandleObject(handle));
  if (!object) SetLastError(ERROR_INVALID_HANDLE);
  return object;
}
