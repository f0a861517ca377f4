#include "host/document/settings_stream.h"

#include <cstring>
#include <string>
#include <unordered_set>

#include "framework/archive.h"
#include "framework/ob_list.h"
#include "host/document/checksum.h"
#include "host/document/document_file.h"

namespace kestrova {
namespace {

constexpr ULONGLONG kMostBytes = 16 << 20;  // a thousand times the size of the product's values

DWORD ChecksumOf(const void* bytes, std::size_t count) {
  Checksum checksum;
  checksum.Add(bytes, count);
  return checksum.Get();
}

void Collect(const QFSettingsKey& key, std::unordered_set<const CObject*>& items) {
  items.insert(&key);
  for (POSITION at = key.GetList().GetHeadPosition(); at;) {
    const CObject* item = key.GetList().GetNext(at);
    items.insert(item);
    if (item && item->IsKindOf(RUNTIME_CLASS(QFSettingsKey))) Collect(*static_cast<const QFSettingsKey*>(item), items);
  }
}

}  // namespace

void WriteSettings(QFDocSettings& settings, CFile& stream) {
  CMemFile file(1 << 14);
  CArchive ar(&file, CArchive::store);
  ar.WriteObject(&settings);
  ar.Close();
  const auto bytes = UINT(file.GetLength());
  if (bytes > kMostBytes) throw CArchiveException(CArchiveException::genericException);
  const DWORD checksum = ChecksumOf(file.GetData(), bytes);
  stream.Write(file.GetData(), bytes);
  stream.Write(&checksum, sizeof checksum);
}

std::unique_ptr<QFDocSettings> ReadSettings(CFile& stream, bool endIsKnown) {
  const ULONGLONG left = stream.GetLength() - stream.GetPosition();
  if (endIsKnown && left > kMostBytes + sizeof(DWORD)) throw std::runtime_error("it is too long for settings");
  std::string bytes(std::size_t(std::min(left, kMostBytes + sizeof(DWORD))), '\0');
  bytes.resize(stream.Read(bytes.data(), UINT(bytes.size())));
  if (endIsKnown) {
    DWORD checksum = 0;
    if (bytes.size() < sizeof checksum) throw std::runtime_error("the data ends too early");
    const std::size_t length = bytes.size() - sizeof checksum;
    std::memcpy(&checksum, bytes.data() + length, sizeof checksum);
    bytes.resize(length);
    if (checksum != ChecksumOf(bytes.data(), length))
      throw std::runtime_error("its checksum is wrong: bytes have changed");
  }
  CMemFile file(reinterpret_cast<BYTE*>(bytes.data()), bytes.size());
  CArchive ar(&file, CArchive::load, BufferBytesFor(file));
  std::unique_ptr<QFDocSettings> settings(static_cast<QFDocSettings*>(ar.ReadObject(RUNTIME_CLASS(QFDocSettings))));
  if (!settings) throw std::runtime_error("it has no settings tree");
  // Deletes objects of the archive that are not in the tree.
  std::unordered_set<const CObject*> items;
  Collect(*settings, items);
  ar.DeleteLoaded([&](const CObject* object) { return !items.contains(object); });
  return settings;
}

}  // namespace kestrova
