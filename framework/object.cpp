// CObject, and the table of serial classes by name.
#include "framework/object.h"

#include <array>
#include <cstring>
#include <mutex>
#include <shared_mutex>
#include <string_view>

#include "framework/block_pool.h"
#include "framework/internal/loaded_objects.h"

namespace {

// A hash table with a fixed number of slots. The records contain the link, so registering a class in a static
// initialiser allocates nothing.
struct NameTable {
  std::shared_mutex lock;
  std::array<CRuntimeClass*, 1024> places = {};
  UINT count = 0;

  CRuntimeClass*& Place(std::string_view name) { return places[std::hash<std::string_view>()(name) % places.size()]; }
};

// Never destroyed, because libraries may be unloaded after static destructors have begun.
NameTable& TheTable() {
  static auto* table = new NameTable;
  return *table;
}

}  // namespace

CRuntimeClassEntry::CRuntimeClassEntry(CRuntimeClass* record) : record_(record) {
  NameTable& table = TheTable();
  const std::unique_lock guard(table.lock);
  CRuntimeClass** last = &table.Place(record->m_lpszClassName);  // appended: the first of a name wins
  while (*last) last = &(*last)->m_pNextClass;
  *last = record;
  record->m_nNumber = ++table.count;
}

CRuntimeClassEntry::~CRuntimeClassEntry() {
  NameTable& table = TheTable();
  const std::unique_lock guard(table.lock);
  CRuntimeClass** at = &table.Place(record_->m_lpszClassName);
  while (*at && *at != record_) at = &(*at)->m_pNextClass;
  if (*at) *at = record_->m_pNextClass;
  record_->m_pNextClass = nullptr;
}

CRuntimeClass* CRuntimeClass::FromName(LPCSTR name, std::size_t length) {
  const std::string_view wanted(name, length);
  NameTable& table = TheTable();
  const std::shared_lock guard(table.lock);
  CRuntimeClass* at = table.Place(wanted);
  while (at && at->m_lpszClassName != wanted) at = at->m_pNextClass;
  return at;
}

CRuntimeClass* CRuntimeClass::FromName(LPCSTR name) { return name ? FromName(name, std::strlen(name)) : nullptr; }

CObject* CRuntimeClass::CreateObject(LPCSTR name) {
  const CRuntimeClass* record = FromName(name);
  return record ? record->CreateObject() : nullptr;
}

constinit CRuntimeClass CObject::classCObject = {"CObject", int(sizeof(CObject)), CRuntimeClass::kNoSchema, nullptr,
                                                 nullptr};

CRuntimeClass* CObject::GetRuntimeClass() const { return RUNTIME_CLASS(CObject); }

CObject::~CObject() {
  if (LoadedObjects::AnyOpen()) LoadedObjects::NoteDestroyed(this);
}

void* CObject::operator new(std::size_t bytes) { return BlockPool::Allocate(bytes); }

void* CObject::operator new(std::size_t bytes, std::align_val_t alignment) { return ::operator new(bytes, alignment); }

void CObject::operator delete(void* block, std::size_t bytes) noexcept {
  if (LoadedObjects::AnyOpen() && LoadedObjects::KeepBlock(block, bytes, std::align_val_t{1})) return;
  BlockPool::Free(block, bytes);
}

void CObject::operator delete(void* block, std::size_t bytes, std::align_val_t alignment) noexcept {
  if (LoadedObjects::AnyOpen() && LoadedObjects::KeepBlock(block, bytes, alignment)) return;
  ::operator delete(block, alignment);
}

void CObject::Serialize(CArchive&) {}

void CObject::AssertValid() const {}

void CObject::Dump(CDumpContext& context) const { context << GetRuntimeClass()->m_lpszClassName; }
