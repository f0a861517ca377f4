#include "host/document/document_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <new>
#include <vector>

#include "framework/archive.h"
#include "framework/stream_file.h"
#include "host/document/checksum.h"
#include "host/document/document_status.h"
#include "host/document/host_document.h"
#include "host/document/settings_stream.h"
#include "host/shell/failure.h"
#include "host/shell/progress_bar.h"
#include "platform/errors.h"
#include "platform/paths.h"
#include "platform/safe_compound_file.h"
#include "platform/safe_file.h"
#include "share/core/document_callbacks.h"
#include "share/core/document_messages.h"
#include "share/core/version_info.h"
#include "share/objects/structured_storage.h"

namespace kestrova {
namespace {

constexpr unsigned long kCreateFile = STGM_READWRITE | STGM_SHARE_EXCLUSIVE | STGM_TRANSACTED | STGM_CREATE;
constexpr unsigned long kCreateStream = STGM_READWRITE | STGM_SHARE_EXCLUSIVE | STGM_CREATE;
constexpr DWORD kReadFile = STGM_READ | STGM_SHARE_DENY_WRITE;
constexpr DWORD kReadStream = STGM_READ | STGM_SHARE_EXCLUSIVE;
constexpr ULONGLONG kLeastPiece = 1024;

std::string StorageText(HRESULT result) {
  switch (result) {
    case STG_E_MEDIUMFULL: return "the disk is full, or the document has 2 GiB or more";
    case STG_E_FILEALREADYEXISTS: return "it is not a document (not a compound file); check the name";
    case STG_E_INVALIDNAME: return "the name is empty; name a file";
    case STG_E_ACCESSDENIED:
      return "access denied; check that it is a file, and the permissions of the file and its folder";
    case STG_E_FILENOTFOUND:
    case STG_E_PATHNOTFOUND: return fmt::format("{}; check the path", ErrorText(DWORD(result) & 0xFFFF));
    case STG_E_DOCFILECORRUPT: return "it is damaged or truncated";
    case STG_E_UNKNOWN: return "unknown system error";
    default: return ErrorText(DWORD(result) & 0xFFFF);
  }
}

}  // namespace

CString TitleOf(const std::string& path) {
  const bool slashesOnly = std::filesystem::path::preferred_separator == '/';
  return FromUtf8(path.substr(path.find_last_of(slashesOnly ? "/" : "/\\:") + 1));
}

int BufferBytesFor(const CFile& stream) {
  constexpr ULONGLONG kShare = 8;
  return int(std::clamp<ULONGLONG>(stream.GetLength() / kShare, kLeastPiece, CArchive::kBufferBytes));
}

StreamFacts FactsOf(CFile& stream) {
  std::vector<char> piece(std::size_t(BufferBytesFor(stream)));
  Checksum checksum;
  StreamFacts facts;
  stream.SeekToBegin();
  const ProgressBar bar("checking bytes", stream.GetLength());
  while (const UINT count = stream.Read(piece.data(), UINT(piece.size()))) {
    checksum.Add(piece.data(), count);
    QFProgressCallback(LONGLONG(facts.bytes += count));
  }
  stream.SeekToBegin();
  facts.checksum = checksum.Get();
  return facts;
}

// ---- saving

namespace {

class DocumentSaver {
 public:
  DocumentSaver(HostDocument& document, const std::string& path)
      : document_(document), path_(path), target_(ProductPathFromSystem(path).c_str()) {}

  void Run() {
    if (path_.empty()) Refuse(STG_E_INVALIDNAME);
    if (!storage_.CreateFileW(target_.Path(), kCreateFile)) Refuse(storage_.GetLastResult());
    InitialiseSerializationStatus(0);
    DocumentHeader header;
    header.storageVersion = CKVVersionInfo::QF_STORAGE_VERSION;
    header.units = document_.Units().code;
    header.objects = Store(kObjectsStream, &document_);
    header.history = Store(kHistoryStream, &document_.History());
    WriteSettings(document_.Settings(), *OpenStream(kSettingsStream));
    if (IsErrorDetected()) Refuse("a reference between objects cannot be stored");
    const std::string bytes = header.ToBytes();
    OpenStream(kHeaderStream)->Write(bytes.data(), UINT(bytes.size()));
    const ProgressBar bar("writing the file", header.objects.bytes + header.history.bytes);
    const SafeFileProgress progress([](ULONGLONG written) { QFProgressCallback(LONGLONG(written)); });
    const HRESULT result = storage_.GetRootStorage()->Commit(STGC_DEFAULT);
    if (result == STG_E_WRITEFAULT)
      throw Failure(path_ + " is saved, but the disk has failed: after a power failure it may be the old file again");
    if (FAILED(result)) Refuse(result);
    storage_.CloseAll();
    if (const LONG status = target_.Replace()) Refuse(ErrorText(DWORD(status)));
  }

 private:
  [[noreturn]] void Refuse(const std::string& reason) const {
    throw Failure(fmt::format("cannot save {}: {}; nothing was written", path_, reason), {.file = path_});
  }
  [[noreturn]] void Refuse(HRESULT result) const { Refuse(StorageText(result)); }

  std::unique_ptr<COleStreamFile> OpenStream(LPCTSTR name) {
    auto file = std::make_unique<COleStreamFile>();  // first: without memory there is no stream to close
    IStream* stream = nullptr;
    if (!storage_.CreateStream(&stream, name, kCreateStream)) Refuse(storage_.GetLastResult());
    file->Attach(stream);
    return file;
  }

  StreamFacts Store(LPCTSTR name, const CObject* root) {
    const auto stream = OpenStream(name);
    CArchive ar(stream.get(), CArchive::store);
    ar.WriteObject(root);
    ar.Close();
    return FactsOf(*stream);
  }

  HostDocument& document_;
  const std::string& path_;
  SafeCompoundFile target_;
  StructuredStorage storage_;
};

// Others may have the file open, for example as a compound file.
constexpr UINT kReadBytes = CFile::modeRead | CFile::shareDenyNone;

bool CanBeRead(const Text& path) {
  CFile file;
  if (!file.Open(path.c_str(), kReadBytes)) return false;
  try {
    FactsOf(file);
    return true;
  } catch (const CFileException&) {
    return false;
  }
}

// A system may say of a truncated compound file that reading fails.
bool IsDamaged(HRESULT result, const Text& path) {
  return result == STG_E_DOCFILECORRUPT || (result == STG_E_READFAULT && CanBeRead(path));
}

// The result of opening a stream. Without memory a stream is not missing.
HRESULT Opened(HRESULT result) {
  if (result == STG_E_INSUFFICIENTMEMORY) throw std::bad_alloc();
  return result;
}

}  // namespace

void SaveDocument(HostDocument& document, const std::string& path) {
  document.DetachFromAllUserObjects();
  document.RebuildTree();
  document.SetServicePack(GetKVServicePack());
  try {
    DocumentSaver(document, path).Run();
  } catch (const CException& failure) {
    throw Failure(fmt::format("cannot save {}: {}; nothing was written", path, failure.what()), {.file = path});
  }
  document.SetTitle(TitleOf(path));
  SetDocumentModifiedFlag(0, &document);
}

// ---- reading

DocumentSource::DocumentSource(const std::string& path) : m_path(ProductPathFromSystem(path)) {
  const HRESULT result =
      path.empty() ? STG_E_INVALIDNAME : StgOpenStorage(m_path.c_str(), nullptr, kReadFile, nullptr, 0, &m_root);
  if (IsDamaged(result, m_path)) {
    m_damage = StorageText(STG_E_DOCFILECORRUPT);
  } else if (FAILED(result)) {
    throw Failure(fmt::format("cannot read {}: {}", path, StorageText(result)), {.file = path});
  }
}

bool DocumentSource::SearchInstead() {
  if (!m_root || !CanBeRead(m_path)) return false;
  m_root->Release();
  m_root = nullptr;
  m_damage = StorageText(STG_E_DOCFILECORRUPT);
  return true;
}

DocumentSource::~DocumentSource() {
  if (m_root) m_root->Release();
}

std::unique_ptr<std::string> DocumentSource::Header() const {
  constexpr std::size_t kMost = 4096;  // much longer than any header
  IStream* stream = nullptr;
  if (!m_root || FAILED(Opened(m_root->OpenStream(kHeaderStream, nullptr, kReadStream, 0, &stream)))) return nullptr;
  COleStreamFile file(stream);
  auto bytes = std::make_unique<std::string>(kMost, '\0');
  try {
    bytes->resize(file.Read(bytes->data(), UINT(bytes->size())));
  } catch (const CFileException&) {
    return nullptr;
  }
  return bytes;
}

DocumentSource::Archive DocumentSource::Open(LPCTSTR stream, std::string_view rootClass) const {
  if (!m_root) return Find(rootClass);
  auto file = std::make_unique<COleStreamFile>();
  IStream* opened = nullptr;
  const HRESULT result = Opened(m_root->OpenStream(stream, nullptr, kReadStream, 0, &opened));
  if (IsDamaged(result, m_path)) return Find(rootClass);
  if (FAILED(result)) return {};
  file->Attach(opened);
  return {std::move(file), false};
}

// Searches the file for the class record at the start of an archive with that root. This build writes a stream in one
// piece, so the archive continues from there.
DocumentSource::Archive DocumentSource::Find(std::string_view rootClass) const {
  constexpr std::size_t kTagBytes = 4;  // the tag of a new class and its schema, before its name
  auto file = std::make_unique<CFile>();
  if (!file->Open(m_path.c_str(), kReadBytes)) return {};
  file->SetFilePath(_T(""));  // as for a stream: messages name the document, not this file
  const std::string name = char(rootClass.size()) + std::string(1, '\0') + std::string(rootClass);
  std::string window;
  std::vector<char> piece(std::size_t(BufferBytesFor(*file)));
  for (ULONGLONG start = 0; const UINT count = file->Read(piece.data(), UINT(piece.size()));) {
    window.append(piece.data(), count);
    for (std::size_t at = window.find(name); at != std::string::npos; at = window.find(name, at + 1)) {
      if (at < kTagBytes || window.compare(at - kTagBytes, 2, "\xFF\xFF") != 0) continue;
      file->Seek(LONGLONG(start + at - kTagBytes), CFile::begin);
      return {std::move(file), true};
    }
    const std::size_t kept = std::min(window.size(), name.size() + kTagBytes);
    start += window.size() - kept;
    window.erase(0, window.size() - kept);
  }
  return {};
}

}  // namespace kestrova
