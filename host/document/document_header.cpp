#include "host/document/document_header.h"

#include <fmt/format.h>

#include <cstring>

#include "host/document/checksum.h"

namespace kestrova {
namespace {

constexpr std::string_view kMagic("KVDOC\r\n\x1A", 8);
constexpr std::size_t kBytes = 48;
constexpr std::size_t kChecked = kBytes - sizeof(DWORD);

DWORD ChecksumOf(std::string_view bytes) {
  Checksum checksum;
  checksum.Add(bytes.data(), bytes.size());
  return checksum.Get();
}

// Calls each(field) for the fields in the order on disk.
template <class Header, class Each>
void ForEachField(Header& header, Each each) {
  each(header.format);
  each(header.storageVersion);
  each(header.units);
  each(header.objects.bytes);
  each(header.objects.checksum);
  each(header.history.bytes);
  each(header.history.checksum);
}

}  // namespace

std::string DocumentHeader::ToBytes() const {
  std::string bytes(kMagic);
  const auto append = [&](const auto& field) { bytes.append(reinterpret_cast<const char*>(&field), sizeof field); };
  ForEachField(*this, append);
  append(ChecksumOf(bytes));
  return bytes;
}

std::string DocumentHeader::FromBytes(std::string_view bytes) {
  if (!bytes.starts_with(kMagic.substr(0, bytes.size())) || bytes.empty()) return "it is not the header of a document";
  if (bytes.size() < kBytes) return fmt::format("it is truncated after {} of {} bytes", bytes.size(), kBytes);
  std::string_view rest = bytes.substr(kMagic.size());
  ForEachField(*this, [&](auto& field) {
    std::memcpy(&field, rest.data(), sizeof field);
    rest.remove_prefix(sizeof field);
  });
  if (format != kDocumentFormat) return fmt::format("it has format {}; this build reads {}", format, kDocumentFormat);
  DWORD checksum = 0;
  std::memcpy(&checksum, rest.data(), sizeof checksum);
  if (bytes.size() > kBytes || checksum != ChecksumOf(bytes.substr(0, kChecked))) return "its checksum is wrong";
  return {};
}

}  // namespace kestrova
