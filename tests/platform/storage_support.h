// What the tests of compound files share: a scratch folder, short calls that give the result, and whole streams.
#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "platform/storage.h"
#include "tests/scratch.h"

namespace kvtest {

struct Releaser {
  template <class T>
  void operator()(T* object) const {
    object->Release();
  }
};
using Storage = std::unique_ptr<IStorage, Releaser>;
using Stream = std::unique_ptr<IStream, Releaser>;

inline constexpr DWORD kRead = STGM_READ | STGM_SHARE_EXCLUSIVE;
inline constexpr DWORD kWrite = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
inline constexpr DWORD kReplace = kWrite | STGM_CREATE;

class CompoundFiles : public testing::Test {
 protected:
  Text PathOf(const std::string& name) const { return (folder_.Path() / name).string<TCHAR>(); }
  Storage Create(const std::string& name = "a.bin", DWORD mode = kReplace) {
    return Take<Storage>([&](IStorage** root) { return StgCreateDocfile(PathOf(name).c_str(), mode, 0, root); });
  }
  Storage Open(const std::string& name = "a.bin", DWORD mode = kRead) {
    return Take<Storage>(
        [&](IStorage** root) { return StgOpenStorage(PathOf(name).c_str(), nullptr, mode, nullptr, 0, root); });
  }
  Stream CreateStream(const Storage& in, const Text& name, DWORD mode = kWrite) {
    return Take<Stream>([&](IStream** made) { return in->CreateStream(name.c_str(), mode, 0, 0, made); });
  }
  Stream OpenStream(const Storage& in, const Text& name, DWORD mode = kRead) {
    return Take<Stream>([&](IStream** opened) { return in->OpenStream(name.c_str(), nullptr, mode, 0, opened); });
  }
  Storage CreateStorage(const Storage& in, const Text& name, DWORD mode = kWrite) {
    return Take<Storage>([&](IStorage** made) { return in->CreateStorage(name.c_str(), mode, 0, 0, made); });
  }
  Storage OpenStorage(const Storage& in, const Text& name, DWORD mode = kRead) {
    return Take<Storage>(
        [&](IStorage** opened) { return in->OpenStorage(name.c_str(), nullptr, mode, nullptr, 0, opened); });
  }
  // The object that a call gives, and its result in result_.
  template <class Owner, class Call>
  Owner Take(Call call) {
    typename Owner::pointer object = nullptr;
    result_ = call(&object);
    return Owner(object);
  }
  // Makes a stream of that content.
  void Put(const Storage& in, const Text& name, const std::string& bytes) {
    const Stream stream = CreateStream(in, name);
    ASSERT_EQ(result_, S_OK);
    ULONG written = 0;
    ASSERT_EQ(stream->Write(bytes.data(), ULONG(bytes.size()), &written), S_OK);
    ASSERT_EQ(written, bytes.size());
  }
  // The content of a stream, or "HRESULT ..." in its place.
  std::string Get(const Storage& in, const Text& name) {
    const Stream stream = OpenStream(in, name);
    return stream ? ContentOf(stream) : "HRESULT " + std::to_string(DWORD(result_));
  }
  static std::string ContentOf(const Stream& stream) {
    STATSTG facts;
    EXPECT_EQ(stream->Stat(&facts, STATFLAG_NONAME), S_OK);
    std::string bytes(std::size_t(facts.cbSize.QuadPart) + 1, '\0');
    ULONG read = 0;
    EXPECT_EQ(stream->Seek({}, STREAM_SEEK_SET, nullptr), S_OK);
    EXPECT_EQ(stream->Read(bytes.data(), ULONG(bytes.size()), &read), S_OK);
    bytes.resize(read);
    return bytes;
  }
  static LARGE_INTEGER Distance(LONGLONG bytes) {
    LARGE_INTEGER distance;
    distance.QuadPart = bytes;
    return distance;
  }
  static ULARGE_INTEGER Size(ULONGLONG bytes) {
    ULARGE_INTEGER size;
    size.QuadPart = bytes;
    return size;
  }

  // What a call above gave beside its object.
  template <class Object>
  HRESULT ResultOf(const Object&) const {
    return result_;
  }

  const ScratchFolder folder_;
  HRESULT result_ = S_OK;  // of the last call above
};

}  // namespace kvtest
