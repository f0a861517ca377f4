// Loads any bytes as a save history and as an object indexer. The first byte chooses the storage version of the
// document: the current one or 6.0. A failed load must throw CArchiveException. A loaded object must work, and must
// load again after it is stored.
#include <cstdlib>
#include <map>
#include <memory>
#include <string>

#include "framework/archive.h"
#include "share/core/document_callbacks.h"
#include "share/env/app_env.h"
#include "share/objects/object.h"
#include "share/objects/object_indexer.h"
#include "share/objects/save_history.h"

namespace {

float g_units = 38.0f;

class Document : public QFObject {
 public:
  int SendQFCoreMessage(QF_CORE_MESSAGE_ID message, ULONGLONG argument, LONGLONG) override {
    if (message == QF_CORE_GET_READ_STORAGE_UNITS) *reinterpret_cast<float*>(argument) = g_units;
    return 1;
  }
  CString GetRegisterNodeName() override { return _T("A"); }
};

unsigned long NextId() {
  static unsigned long id = 0;
  return 1 + id++ % 5;
}

QFObject* TheDocument() {
  static Document document;
  return &document;
}

// Null if the bytes don't load.
template <class T>
std::unique_ptr<T> Load(const BYTE* data, std::size_t size) {
  CMemFile file(const_cast<BYTE*>(data), size);
  CArchive ar(&file, CArchive::load, 128);
  try {
    T* object = nullptr;
    ar >> object;
    return std::unique_ptr<T>(object);
  } catch (const CArchiveException&) {
    return nullptr;
  }
}

std::string Stored(CObject& object) {
  CMemFile file;
  CArchive ar(&file, CArchive::store);
  ar.WriteObject(&object);
  ar.Close();
  return {reinterpret_cast<const char*>(file.GetData()), std::size_t(file.GetLength())};
}

// Loads stored bytes in the current storage version.
template <class T>
std::unique_ptr<T> Reload(const std::string& bytes) {
  g_units = 38.0f;
  auto again = Load<T>(reinterpret_cast<const BYTE*>(bytes.data()), bytes.size());
  if (!again) std::abort();
  return again;
}

void Use(QFObjectIndexerHelper& helper) {
  const std::string bytes = Stored(helper);
  if (Stored(*Reload<QFObjectIndexerHelper>(bytes)) != bytes) std::abort();
  Document node, other;
  helper.FindIndex(&node);
  helper.AddObj(&node);
  if (helper.FindIndex(&node) < 0) std::abort();
  helper.ReplaceObj(&node, &other);
  if (helper.FindIndex(&other) < 0) std::abort();
  helper.ReleaseIndexer(&node);
  std::map<CString, int> counts = {{_T("A"), 0}};
  helper.CorrectIndexersReferences(counts);
  helper.ClearUnusedIndexers();
  if (helper.FindIndex(&other) >= 0) std::abort();
}

void Use(QFDocSrHistoryMngr& manager) {
  CObList before, after;
  manager.GetAllHistoryObjects(before);
  const auto again = Reload<QFDocSrHistoryMngr>(Stored(manager));
  again->GetAllHistoryObjects(after);
  if (after.GetCount() - before.GetCount() > 1 || after.IsEmpty()) std::abort();
  for (POSITION at = after.GetHeadPosition(); at;)
    static_cast<QFDocSrHistory*>(after.GetNext(at))->UnlockForWriting(/*init=*/1);
}

template <class T>
void Run(const std::uint8_t* data, std::size_t size) {
  g_units = data[0] % 2 == 0 ? 38.0f : 6.0f;
  if (const auto object = Load<T>(data + 1, size - 1)) Use(*object);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  QFShareRegisterDocCBK(nullptr, NextId, TheDocument, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                        nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  InitAppEnv();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  Run<QFObjectIndexerHelper>(data, size);
  Run<QFDocSrHistoryMngr>(data, size);
  return 0;
}
