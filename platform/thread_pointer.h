// ThreadPointer, an object of each thread that is given back at the thread's end.
//
// Not a thread_local variable with a destructor: on some systems these variables are freed before their destructors
// run, and each use is a slow call.
#pragma once

#include "platform/types.h"

#ifdef _WIN32

#include <new>

#else

#include <utility>

#endif

// A pointer of each thread, null at first. At the end of a thread whose pointer is not null the pointer becomes null,
// and AtExit is called with it. A pointer that is set later than that may never be given back. One type has one pointer
// in each module: the library, the program.
template <class T, void (*AtExit)(T*)>
class ThreadPointer {
 public:
#ifdef _WIN32
  static T* Get() {
    const DWORD status = GetLastError();  // the call changes it
    auto* const value = static_cast<T*>(FlsGetValue(slot_));
    SetLastError(status);
    return value;
  }
  static void Set(T* value) {
    static const bool made = [] {
      slot_ = FlsAlloc([](void* last) { AtExit(static_cast<T*>(last)); });
      return slot_ != FLS_OUT_OF_INDEXES;
    }();
    if (!made || !FlsSetValue(slot_, value)) throw std::bad_alloc();
  }

 private:
  inline static constinit DWORD slot_ = FLS_OUT_OF_INDEXES;  // a fibre-local slot, whose callback comes first
#else
  static T* Get() { return t_value; }
  static void Set(T* value) {
    t_value = value;
    static thread_local const Last last;
    static_cast<void>(last);
  }

 private:
  struct Last {
    ~Last() {
      if (T* const value = std::exchange(t_value, nullptr)) AtExit(value);
    }
  };
  KV_FAST_THREAD_LOCAL inline static constinit T* t_value = nullptr;
#endif
};
