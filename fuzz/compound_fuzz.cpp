// Reads any bytes as a compound file: walks it and reads all streams without access outside the bytes. After adding one
// stream and saving, the content must be the same.
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "platform/files.h"
#include "platform/process.h"
#include "platform/storage.h"

namespace {

constexpr DWORD kRead = STGM_READ | STGM_SHARE_EXCLUSIVE;
constexpr DWORD kWrite = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;

// Whether the file has an element whose name the calls refuse.
bool unreachable = false;

// Appends all names and a checksum of each stream to content. Returns false if a stream is damaged.
bool Walk(IStorage* storage, std::u16string& content) {
  bool whole = true;
  IEnumSTATSTG* elements = nullptr;
  if (storage->EnumElements(0, nullptr, 0, &elements) != S_OK) std::abort();
  STATSTG facts;
  while (elements->Next(1, &facts, nullptr) == S_OK) {
    content += facts.pwcsName;
    IStorage* inner = nullptr;
    IStream* stream = nullptr;
    if (facts.type == STGTY_STORAGE) {
      const HRESULT result = storage->OpenStorage(facts.pwcsName, nullptr, kRead, nullptr, 0, &inner);
      content += u'{';
      if (result == S_OK) whole &= Walk(inner, content);
      if (result == STG_E_INVALIDNAME) unreachable = true;
      if (result != S_OK && result != STG_E_INVALIDNAME) std::abort();
      content += u'}';
    } else {
      const HRESULT result = storage->OpenStream(facts.pwcsName, nullptr, kRead, 0, &stream);
      std::vector<BYTE> bytes(std::size_t(facts.cbSize.QuadPart) + 1);
      ULONG read = 0;
      const bool good = result == S_OK && stream->Read(bytes.data(), ULONG(bytes.size()), &read) == S_OK;
      if (good && read != facts.cbSize.QuadPart) std::abort();
      if (result == STG_E_INVALIDNAME) {
        unreachable = true;
      } else {
        whole &= good;
      }
      std::uint32_t sum = read;
      for (ULONG i = 0; i < read; ++i) sum = sum * 31 + bytes[i];
      content += char16_t(sum);
      content += char16_t(sum >> 16);
    }
    if (inner) inner->Release();
    if (stream) stream->Release();
    CoTaskMemFree(facts.pwcsName);
  }
  elements->Release();
  return whole;
}

IStorage* Open(LPCWSTR path, DWORD mode) {
  IStorage* root = nullptr;
  StgOpenStorage(path, nullptr, mode, nullptr, 0, &root);
  return root;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  SetEnvironmentVariableW(_T("TMPDIR"), _T("/dev/shm"));  // each round flushes a file
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static TCHAR path[MAX_PATH];
  static TCHAR temporary[MAX_PATH];
  static const UINT made = GetTempPathW(MAX_PATH, temporary) ? GetTempFileNameW(temporary, _T("kvf"), 0, path) : 0;
  const HANDLE file = CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
  DWORD written = 0;
  if (made == 0 || !WriteFile(file, bytes, DWORD(size), &written, nullptr)) std::abort();
  CloseHandle(file);

  IStorage* root = Open(path, kWrite | STGM_TRANSACTED);
  if (!root) return 0;
  std::u16string before, after;
  unreachable = false;
  const bool whole = Walk(root, before);
  IStream* added = nullptr;
  ULARGE_INTEGER added_size;
  added_size.QuadPart = 5000;
  root->CreateStream(_T("added by the fuzzer"), kWrite | STGM_CREATE, 0, 0, &added);
  if (!added || added->SetSize(added_size) != S_OK) std::abort();
  added->Release();
  const HRESULT saved = root->Commit(STGC_DEFAULT);
  if ((saved == S_OK) != whole && !unreachable) std::abort();
  before.clear();
  Walk(root, before);
  root->Release();
  if (saved != S_OK) return 0;
  root = Open(path, kRead);
  if (!root || !Walk(root, after) || before != after) std::abort();
  root->Release();
  return 0;
}
