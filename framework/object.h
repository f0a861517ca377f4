// CObject, the root of everything that knows its class at run time and can be kept in an archive, and CRuntimeClass,
// the record of a class: its name, schema number, base and how to make an object of it.
//
// A class says in its declaration how much of this it takes part in, and repeats it once in its source:
//
//   DECLARE_DYNAMIC(C)     IMPLEMENT_DYNAMIC(C, Base)          IsKindOf and the casts work
//   DECLARE_DYNCREATE(C)   IMPLEMENT_DYNCREATE(C, Base)        and CRuntimeClass::CreateObject
//   DECLARE_SERIAL(C)      IMPLEMENT_SERIAL(C, Base, schema)   and archives, with operator>>(CArchive&, C*&)
//
// The default constructor that the last two need may be protected. A schema is a number from 0 to 0xFFFE, the same for
// ever for one layout of the class's bytes; with VERSIONABLE_SCHEMA | number the class reads its older layouts too and
// asks CArchive::GetObjectSchema which one stands before it.
#pragma once

#include <cassert>
#include <cstddef>
#include <new>

#include "framework/text.h"

class CArchive;
class CObject;

inline constexpr UINT VERSIONABLE_SCHEMA = 0x80000000;

// The record of one class. Records are static and constant from before the first initialiser runs; any thread reads
// them. Made by the macros alone.
struct KVSHARE_API CRuntimeClass {
  // The schema of a class that is not serial.
  static constexpr UINT kNoSchema = 0xFFFF;

  LPCSTR m_lpszClassName;
  int m_nObjectSize;                // bytes of one object
  UINT m_wSchema;                   // with VERSIONABLE_SCHEMA where declared so; kNoSchema if the class is not serial
  CObject* (*m_pfnCreateObject)();  // null if objects can't be made from the record
  CRuntimeClass* m_pBaseClass;      // null for CObject
  CRuntimeClass* m_pNextClass = nullptr;  // next of the registered classes with the same place in the name table
  UINT m_nNumber = 0;                     // running number of the registered classes, from 1: a place for small tables

  // A new object on the heap, owned by the caller; null if the class can't make any.
  CObject* CreateObject() const { return m_pfnCreateObject ? m_pfnCreateObject() : nullptr; }
  // True for the class itself and everything below it. A null base gives false.
  bool IsDerivedFrom(const CRuntimeClass* base) const noexcept {
    for (const CRuntimeClass* at = this; at; at = at->m_pBaseClass)
      if (at == base) return true;
    return false;
  }

  // The serial class of that name, compared exactly, or null. Of several with one name (two loaded libraries that each
  // bring their own) the one that came first answers, until its library is unloaded. Any thread may call.
  static CRuntimeClass* FromName(LPCSTR name);
  static CRuntimeClass* FromName(LPCSTR name, std::size_t length);
  // A new object of the class of that name; null if there is no such class. The caller owns it.
  static CObject* CreateObject(LPCSTR name);
};

// Enters a class in the name table while it lives; one for each IMPLEMENT_SERIAL. Any thread may load a library.
class KVSHARE_API CRuntimeClassEntry {
 public:
  explicit CRuntimeClassEntry(CRuntimeClass* record);
  ~CRuntimeClassEntry();
  CRuntimeClassEntry(const CRuntimeClassEntry&) = delete;
  CRuntimeClassEntry& operator=(const CRuntimeClassEntry&) = delete;

 private:
  CRuntimeClass* record_;
};

// Takes what CObject::Dump prints.
class KVSHARE_API CDumpContext {
 public:
  CString m_Text;

  CDumpContext& operator<<(LPCTSTR text) {
    m_Text += text;
    return *this;
  }
  CDumpContext& operator<<(LPCSTR text) {
    m_Text += text;
    return *this;
  }
  CDumpContext& operator<<(LONGLONG number) {
    m_Text.AppendFormat(_T("%d"), number);
    return *this;
  }
};

// An object is used by one thread at a time. It can't be copied, unless its class says how.
class KVSHARE_API CObject {
 public:
  static CRuntimeClass classCObject;

  // The slots of every class, in this order.
  virtual CRuntimeClass* GetRuntimeClass() const;
  virtual ~CObject();
  // Writes the object's fields to a storing archive, in order, or reads them from a loading one. A class calls its
  // base's first. CObject has no fields. Raises what the archive raises.
  virtual void Serialize(CArchive& ar);
  // Diagnostics. AssertValid stops a debug build in a broken object; Dump prints the class's name.
  virtual void AssertValid() const;
  virtual void Dump(CDumpContext& context) const;

  // True if the object may go into an archive by reference.
  bool IsSerializable() const { return GetRuntimeClass()->m_wSchema != CRuntimeClass::kNoSchema; }
  bool IsKindOf(const CRuntimeClass* base) const { return GetRuntimeClass()->IsDerivedFrom(base); }

  // Small objects come from pages of their thread (framework/block_pool.h), others from the heap. What is deleted while
  // a failed load takes back what it had made (framework/archive.h) is held for that short while.
  static void* operator new(std::size_t bytes);
  static void* operator new(std::size_t bytes, std::align_val_t alignment);
  static void* operator new(std::size_t, void* place) noexcept { return place; }
  static void operator delete(void* block, std::size_t bytes) noexcept;
  static void operator delete(void* block, std::size_t bytes, std::align_val_t alignment) noexcept;
  static void operator delete(void*, void*) noexcept {}

 protected:
  CObject() = default;
  CObject(const CObject&) = delete;
  CObject& operator=(const CObject&) = delete;
};

// CArchive::ReadObject, for the operators that DECLARE_SERIAL declares.
KVSHARE_API CObject* ReadObjectOfClass(CArchive& ar, const CRuntimeClass* wanted);

// ---- macros

#define RUNTIME_CLASS(class_name) (&class_name::class##class_name)

#define DECLARE_DYNAMIC(class_name)       \
 public:                                  \
  static CRuntimeClass class##class_name; \
  CRuntimeClass* GetRuntimeClass() const override;

#define DECLARE_DYNCREATE(class_name) \
  DECLARE_DYNAMIC(class_name)         \
  static CObject* CreateObject();

// The operator replaces the pointer by the reference read, which the archive's caller owns or shares; it raises
// CArchiveException badClass if the object is of another class, and then leaves the pointer alone.
#define DECLARE_SERIAL(class_name)                                                       \
  DECLARE_DYNCREATE(class_name)                                                          \
  friend CArchive& operator>>(CArchive& ar, class_name*& object) {                       \
    object = static_cast<class_name*>(ReadObjectOfClass(ar, RUNTIME_CLASS(class_name))); \
    return ar;                                                                           \
  }

#define KV_IMPLEMENT_CLASS(class_name, base_class_name, schema, create)                                                \
  constinit CRuntimeClass class_name::class##class_name = {#class_name, int(sizeof(class_name)), UINT(schema), create, \
                                                           RUNTIME_CLASS(base_class_name)};                            \
  CRuntimeClass* class_name::GetRuntimeClass() const { return RUNTIME_CLASS(class_name); }

#define IMPLEMENT_DYNAMIC(class_name, base_class_name) \
  KV_IMPLEMENT_CLASS(class_name, base_class_name, CRuntimeClass::kNoSchema, nullptr)

#define IMPLEMENT_DYNCREATE(class_name, base_class_name)                                              \
  KV_IMPLEMENT_CLASS(class_name, base_class_name, CRuntimeClass::kNoSchema, class_name::CreateObject) \
  CObject* class_name::CreateObject() { return new class_name; }

#define IMPLEMENT_SERIAL(class_name, base_class_name, schema)                       \
  KV_IMPLEMENT_CLASS(class_name, base_class_name, schema, class_name::CreateObject) \
  CObject* class_name::CreateObject() { return new class_name; }                    \
  static const CRuntimeClassEntry kEntryOf##class_name(RUNTIME_CLASS(class_name));

// ---- casts

// The object as the class asked for, or null if it is null or of another class.
template <class T>
T* DynamicDowncast(const CRuntimeClass* wanted, CObject* object) {
  return object && object->IsKindOf(wanted) ? static_cast<T*>(object) : nullptr;
}
template <class T>
const T* DynamicDowncast(const CRuntimeClass* wanted, const CObject* object) {
  return object && object->IsKindOf(wanted) ? static_cast<const T*>(object) : nullptr;
}
#define DYNAMIC_DOWNCAST(class_name, object) (DynamicDowncast<class_name>(RUNTIME_CLASS(class_name), object))

// The same for an object that is known to be of the class; a debug build stops if it is not.
template <class T>
T* StaticDowncast(const CRuntimeClass* wanted, CObject* object) {
  assert(!object || object->IsKindOf(wanted));
  static_cast<void>(wanted);
  return static_cast<T*>(object);
}
#define STATIC_DOWNCAST(class_name, object) (StaticDowncast<class_name>(RUNTIME_CLASS(class_name), object))
