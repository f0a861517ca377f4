// Loads any bytes as a document. Bit 0 of the first byte: the rest is the objects' archive (0) or the whole file (1).
// Bit 1: keep the undamaged part (0) or refuse damage (1). A loaded document can be shown, dumped and saved; the saved
// file must load as the same document without a finding.
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "framework/stream_file.h"
#include "host/document/active_document.h"
#include "host/document/document_loader.h"
#include "host/document/document_tree.h"
#include "host/module/main_module.h"
#include "host/shell/failure.h"
#include "platform/paths.h"
#include "platform/process.h"
#include "share/core/version_info.h"
#include "share/objects/structured_storage.h"

namespace {

using namespace kestrova;
using Mode = DocumentLoader::Mode;

std::FILE* nowhere = nullptr;

void Require(bool holds) {
  if (!holds) std::abort();
}

const std::string& Path() {
  static std::string path;
  if (!path.empty()) return path;
  TCHAR folder[MAX_PATH], file[MAX_PATH];
  Require(GetTempPathW(MAX_PATH, folder) && GetTempFileNameW(folder, _T("kvf"), 0, file));
  return path = SystemPathFromProduct(file);
}

void WriteBytes(std::string_view bytes) {
  std::FILE* file = std::fopen(Path().c_str(), "wb");
  Require(file && std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size());
  std::fclose(file);
}

// Writes a file that contains the archive, a matching header and a null history.
void WriteObjects(std::string_view bytes) {
  constexpr DWORD kWrite = STGM_READWRITE | STGM_SHARE_EXCLUSIVE | STGM_CREATE;
  StructuredStorage storage;
  Require(storage.CreateFileW(ProductPathFromSystem(Path()).c_str(), kWrite | STGM_TRANSACTED));
  const auto write = [&](LPCTSTR name, std::string_view content) {
    IStream* stream = nullptr;
    Require(storage.CreateStream(&stream, name, kWrite));
    COleStreamFile file(stream);
    file.Write(content.data(), UINT(content.size()));
    return FactsOf(file);
  };
  DocumentHeader header;
  header.storageVersion = CKVVersionInfo::QF_STORAGE_VERSION;
  header.objects = write(kObjectsStream, bytes);
  header.history = write(kHistoryStream, std::string_view("\0\0", 2));
  write(kHeaderStream, header.ToBytes());
  Require(storage.GetRootStorage()->Commit(STGC_DEFAULT) == S_OK);
}

// Null if the load was refused.
std::unique_ptr<HostDocument> Load(Mode mode, std::size_t* findings = nullptr) {
  try {
    DocumentLoader loader(Path(), mode);
    auto document = loader.Load();
    Require(document != nullptr);
    if (findings) *findings = loader.Report().findingCount;
    return document;
  } catch (const Failure&) {
    return nullptr;
  }
}

// The document as JSON. Also dumps the document and its nodes to a file that discards everything.
std::string Shown(HostDocument& document) {
  const ActiveDocument active(&document);
  document.DumpData(nowhere);
  document.Walk([](HostNode& node, int) { node.DumpData(nowhere); });
  WriteTree(document, nowhere);
  char* text = nullptr;
  std::size_t size = 0;
  std::FILE* out = open_memstream(&text, &size);
  WriteTreeJson(document, out);
  std::fclose(out);
  std::string shown(text, size);
  std::free(text);
  return shown;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  SetEnvironmentVariableW(_T("TMPDIR"), _T("/dev/shm"));  // each round writes files
  nowhere = std::fopen("/dev/null", "w");
  StartMainModule();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  (data[0] & 1 ? WriteBytes : WriteObjects)(bytes);
  const auto document = Load(data[0] & 2 ? Mode::kStrict : Mode::kSalvage);
  if (!document) return 0;
  const std::string shown = Shown(*document);
  {
    const ActiveDocument active(document.get());
    SaveDocument(*document, Path());
  }
  std::size_t findings = 0;
  const auto again = Load(Mode::kStrict, &findings);
  Require(again && findings == 0 && Shown(*again) == shown);
  return 0;
}
