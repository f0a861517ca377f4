// Reads any bytes as a compound file: walks it and reads all streams without access outside the bytes. After adding one
// stream and saving, the content must be the same.
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "platform/files.h"
#include "platform/process.h"
#include "platform/storage.h"
#include "platform/text.h"

namespace {

constexpr DWORD kRead = STGM_READ | STGM_SHARE_EXCLUSIVE;
constexpr DWORD kWrite = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;

// Equal without case: a storage that two names reach is walked once.
struct NameLess {
  bool operator()(const std::u16string& a, const std::u16string& b) const {
    return CompareStringOrdinal(a.c_str(), -1, b.c_str(), -1, TRUE) == CSTR_LESS_THAN;
  }
};
using Names = std::set<std::u16string, NameLess>;

// The names that the file's directory entries hold: 64 bytes of text and its length, at every multiple of 128 bytes.
Names NamesIn(const std::uint8_t* bytes, std::size_t size) {
  Names names;
  for (std::size_t at = 0; at + 66 <= size; at += 128) {
    WORD length = 0;
    std::u16string name(32, u'\0');
    std::memcpy(&length, bytes + at + 64, sizeof length);
    std::memcpy(name.data(), bytes + at, 64);
    if (length >= 4 && length <= 64) names.insert(name.substr(0, length / 2u - 1));
  }
  return names;
}

// Appends the names that exist and a checksum of each stream to content. Returns false if a stream is damaged.
bool Walk(IStorage* storage, const Names& names, std::u16string& content) {
  bool whole = true;
  for (const std::u16string& name : names) {
    IStorage* inner = nullptr;
    IStream* stream = nullptr;
    if (storage->OpenStorage(name.c_str(), nullptr, kRead, nullptr, 0, &inner) == S_OK) {
      content += name + u'{';
      whole &= Walk(inner, names, content);
      content += u'}';
      inner->Release();
      continue;
    }
    const HRESULT result = storage->OpenStream(name.c_str(), nullptr, kRead, 0, &stream);
    if (result == STG_E_DOCFILECORRUPT) whole = false;
    if (result != S_OK) continue;
    STATSTG facts;
    if (stream->Stat(&facts, STATFLAG_NONAME) != S_OK) std::abort();
    std::vector<BYTE> bytes(std::size_t(facts.cbSize.QuadPart) + 1);
    ULONG read = 0;
    const bool good = stream->Read(bytes.data(), ULONG(bytes.size()), &read) == S_OK;
    if (good && read != facts.cbSize.QuadPart) std::abort();
    whole &= good;
    std::uint32_t sum = read;
    for (ULONG i = 0; i < read; ++i) sum = sum * 31 + bytes[i];
    content += name;
    content += char16_t(sum);
    content += char16_t(sum >> 16);
    stream->Release();
  }
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
  Names names = NamesIn(bytes, size);
  names.insert(u"added by the fuzzer");
  std::u16string before, after;
  const bool whole = Walk(root, names, before);
  IStream* added = nullptr;
  ULARGE_INTEGER added_size;
  added_size.QuadPart = 5000;
  root->CreateStream(_T("added by the fuzzer"), kWrite | STGM_CREATE, 0, 0, &added);
  if (!added || added->SetSize(added_size) != S_OK) std::abort();
  added->Release();
  const HRESULT saved = root->Commit(STGC_DEFAULT);
  if (saved == S_OK && !whole) std::abort();
  before.clear();
  Walk(root, names, before);
  root->Release();
  if (saved != S_OK) return 0;
  root = Open(path, kRead);
  if (!root || !Walk(root, names, after) || before != after) std::abort();
  root->Release();
  return 0;
}
