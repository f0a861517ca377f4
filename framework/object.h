// CObject: the base of all classes that know their class at run time and can be stored in an archive. CRuntimeClass:
// the record of a class, with its name, schema number, base and a function that creates an object.
//
// A class says in its declaration which features it has, and repeats this once in its source:
//
//   DECLARE_DYNAMIC(C)     IMPLEMENT_DYNAMIC(C, Base)          IsKindOf and the casts
//   DECLARE_DYNCREATE(C)   IMPLEMENT_DYNCREATE(C, Base)        and CRuntimeClass::CreateObject
//   DECLARE_SERIAL(C)      IMPLEMENT_SERIAL(C, Base, schema)   and archives, with operator>>(CArchive&, C*&)
//
// The last two need a default constructor; it may be protected. A schema is a number from 0 to 0xFFFE for one layout of
// the class's bytes; one layout keeps its number for ever. With VERSIONABLE_SCHEMA | number the class also reads its
// older layouts and gets their number from CArchive::GetObjectSchema. Any other stored number raises badSchema.
#pragma once

#include <cassert>
#include <cstddef>
#include <new>

#include "framework/text.h"

class CArchive;
class CObject;

inline constexpr UINT VERSIONABLE_SCHEMA = 0x80000000;

// The record of one class. Records are static and initialised at compile time; any thread may read them. Only the
// macros create them.
struct KVSHARE_API CRuntimeClass {
  // The schema of a class that is not serial.
  static constexpr UINT kNoSchema = 0xFFFF;

  LPCSTR m_lpszClassName;
  int m_nObjectSize;                // bytes of one object
  UINT m_wSchema;                   // with VERSIONABLE_SCHEMA if declared so; kNoSchema for a class that is not serial
  CObject* (*m_pfnCreateObject)();  // null if the record cannot create objects
  CRuntimeClass* m_pBaseClass;      // null for CObject
  CRuntimeClass* m_pNextClass = nullptr;  // the next registered class of the same slot in the name table
  UINT m_nNumber = 0;                     // number of the registered class, from 1, for small tables

  // A new object on the heap, which the caller owns; null if the class cannot create objects.
  CObject* CreateObject() const { return m_pfnCreateObject ? m_pfnCreateObject() : nullptr; }
  // True for the class itself and all classes derived from it. False for a null base.
  bool IsDerivedFrom(const CRuntimeClass* base) const noexcept {
    for (const CRuntimeClass* at = this; at; at = at->m_pBaseClass)
      if (at == base) return true;
    return false;
  }

  // Returns the serial class of this name, or null; names are compared exactly. If two loaded libraries have a class of
  // the same name, the one that was registered first is returned until its library is unloaded. Any thread may call.
  static CRuntimeClass* FromName(LPCSTR name);
  static CRuntimeClass* FromName(LPCSTR name, std::size_t length);
  // A new object of the class with this name, which the caller owns; null if there is no such class.
  static CObject* CreateObject(LPCSTR name);
};

// Registers a class in the name table for the lifetime of this entry. IMPLEMENT_SERIAL creates one. Libraries may be
// loaded on any thread.
class KVSHARE_API CRuntimeClassEntry {
 public:
  explicit CRuntimeClassEntry(CRuntimeClass* record);
  ~CRuntimeClassEntry();
  CRuntimeClassEntry(const CRuntimeClassEntry&) = delete;
  CRuntimeClassEntry& operator=(const CRuntimeClassEntry&) = delete;

 private:
  CRuntimeClass* record_;
};

// Collects the text that CObject::Dump prints.
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

// One thread at a time may use an object. Objects cannot be copied, unless their class allows it.
class KVSHARE_API CObject {
 public:
  static CRuntimeClass classCObject;

  // The first virtual functions of every class, in this order, because modules call them through the same table.
  virtual CRuntimeClass* GetRuntimeClass() const;
  virtual ~CObject();
  // Writes the object's fields to a storing archive or reads them from a loading one, in the same order. A derived
  // class first calls CArchive::SerializeClass, if it has its own record, and then its base's Serialize. CObject has no
  // fields. Raises what the archive raises.
  virtual void Serialize(CArchive& ar);
  // For diagnosis. AssertValid stops a debug build if the object is damaged. Dump prints the class's name.
  virtual void AssertValid() const;
  virtual void Dump(CDumpContext& context) const;

  // True if an archive can store references to the object.
  bool IsSerializable() const { return GetRuntimeClass()->m_wSchema != CRuntimeClass::kNoSchema; }
  bool IsKindOf(const CRuntimeClass* base) const { return GetRuntimeClass()->IsDerivedFrom(base); }

  // Small objects come from pages of their thread (framework/block_pool.h), others from the heap. While a failed load
  // is cleaned up (CArchive::ReadObject), the memory of deleted objects is kept until the clean-up ends.
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

// CArchive::ReadObject for the operators of DECLARE_SERIAL.
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

// operator>> sets the pointer to the object that was read; CArchive::ReadObject says who owns it. If reading raises,
// for example badClass for an object of another class, the pointer is unchanged.
#define DECLARE_SERIAL(class_name)                                                       \
  DECLARE_DYNCREATE(class_name)                                                          \
  [[maybe_unused]] friend CArchive& operator>>(CArchive& ar, class_name*& object) {      \
    object = static_cast<class_name*>(ReadObjectOfClass(ar, RUNTIME_CLASS(class_name))); \
    return ar;                                                                           \
  }

#define KV_IMPLEMENT_CLASS(class_name, base_class_name, schema, create)                                      \
  CRuntimeClass class_name::class##class_name = {#class_name, int(sizeof(class_name)), UINT(schema), create, \
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

// The object as the wanted class; null if it is null or of another class.
template <class T>
T* DynamicDowncast(const CRuntimeClass* wanted, CObject* object) {
  return object && object->IsKindOf(wanted) ? static_cast<T*>(object) : nullptr;
}
template <class T>
const T* DynamicDowncast(const CRuntimeClass* wanted, const CObject* object) {
  return object && object->IsKindOf(wanted) ? static_cast<const T*>(object) : nullptr;
}
#define DYNAMIC_DOWNCAST(class_name, object) (DynamicDowncast<class_name>(RUNTIME_CLASS(class_name), object))

// The same for an object whose class is known: a debug build stops if the class is wrong, a release build does not
// check.
template <class T>
T* StaticDowncast(const CRuntimeClass* wanted, CObject* object) {
  assert(!object || object->IsKindOf(wanted));
  static_cast<void>(wanted);
  return static_cast<T*>(object);
}
#define STATIC_DOWNCAST(class_name, object) (StaticDowncast<class_name>(RUNTIME_CLASS(class_name), object))
