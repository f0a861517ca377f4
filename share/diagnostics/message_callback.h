// QFMessageCallback: a numbered message to the main module, with arguments.
//
// The main module receives a pointer to the arguments, each in eight bytes: an integer or enumeration widened, a
// double, a pointer; a text as the pointer to its units, valid during the call. It reads them in their order:
//
//   int OnMessage(unsigned id, char*& arguments) {
//     const int count = NextMessageArgument<int>(arguments);
//     const CString name = NextMessageArgument<LPCTSTR>(arguments);
#pragma once

#include <cstring>
#include <type_traits>

#include "share/core/document_callbacks.h"

// One argument as it is passed. Created by the call itself.
struct MessageArgument {
  template <class T>
  requires(std::is_integral_v<T> || std::is_enum_v<T>) MessageArgument(T value) : bits(ULONGLONG(value)) {}
  MessageArgument(double value) { std::memcpy(&bits, &value, sizeof bits); }
  MessageArgument(const void* value) : bits(reinterpret_cast<std::uintptr_t>(value)) {}
  MessageArgument(const CString& value) : MessageArgument(value.GetString()) {}

  ULONGLONG bits = 0;
};

// Takes the next argument; T is the type that was passed, LPCTSTR for a text, double for a float.
template <class T>
T NextMessageArgument(char*& arguments) {
  static_assert(std::is_trivially_copyable_v<T> && sizeof(T) <= sizeof(ULONGLONG));
  T value;
  std::memcpy(&value, arguments, sizeof value);
  arguments += sizeof(ULONGLONG);
  return value;
}

// The main module's answer; 0 if it has registered no callback. Any thread may call.
template <class... Arguments>
int QFMessageCallback(unsigned stringId, const Arguments&... arguments) {
  ULONGLONG packed[sizeof...(Arguments) + 1] = {MessageArgument(arguments).bits...};
  char* first = reinterpret_cast<char*>(packed);
  return SendMessageCB(stringId, first);
}
