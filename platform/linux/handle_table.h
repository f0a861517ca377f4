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

// An object that ends once and stays ended.
class WaitableObject : public HandleObject {
 public:
  // Waits for its end, at most that long; below 0 as long as it takes. As poll: above 0 if it has ended, 0 at the end
  // of the time, below 0, with errno, on failure.
  virtual int Wait(int milliseconds) const = 0;
};

// What GetCurrentThread gives.
inline constexpr std::uintptr_t kPseudoThread = std::uintptr_t(-2);

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
