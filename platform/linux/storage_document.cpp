#include "platform/linux/storage_document.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>

#include "platform/linux/compound_format.h"
#include "platform/linux/compound_reader.h"
#include "platform/linux/compound_writer.h"
#include "platform/linux/file_times.h"
#include "platform/paths.h"

namespace {

constexpr DWORD kAccessBits = 0x3;
constexpr DWORD kShareBits = 0x70;
constexpr DWORD kElementBits = kAccessBits | kShareBits | STGM_CREATE;
constexpr DWORD kRootBits = kElementBits | STGM_TRANSACTED;

bool IsAccess(DWORD mode) { return (mode & kAccessBits) == STGM_READ || (mode & kAccessBits) == STGM_READWRITE; }

}  // namespace

// ---- documents

HRESULT StorageDocument::Load() {
  std::shared_ptr<CompoundReader> reader;
  auto tree = std::make_shared<StorageNode>();
  HRESULT result = CompoundReader::Open(SystemPathFromProduct(path.c_str()), reader);
  if (SUCCEEDED(result)) result = reader->ReadTree(reader, *tree);
  if (FAILED(result)) return result;
  Replace(std::move(tree));
  has_file = true;
  return S_OK;
}

void StorageDocument::Clear() {
  auto tree = std::make_shared<StorageNode>();
  tree->is_storage = true;
  tree->created = tree->modified = StorageTimeNow();
  Replace(std::move(tree));
}

void StorageDocument::Replace(std::shared_ptr<StorageNode> tree) {
  if (root) root->MarkGone();
  root = std::move(tree);
  changed = false;
}

HRESULT StorageDocument::Save() {
  const HRESULT result = WriteCompoundFile(path.c_str(), *root);
  if (FAILED(result)) return result;
  has_file = true;
  changed = false;
  return S_OK;
}

// ---- modes and names

HRESULT CheckRootMode(DWORD mode) {
  const DWORD share = mode & kShareBits;
  if ((mode & ~kRootBits) != 0 || !IsAccess(mode) || share > STGM_SHARE_DENY_WRITE) return STG_E_INVALIDFLAG;
  if (mode & STGM_TRANSACTED) return S_OK;
  const bool good = share == STGM_SHARE_EXCLUSIVE || (share == STGM_SHARE_DENY_WRITE && !CanWrite(mode));
  return good ? S_OK : STG_E_INVALIDFLAG;
}

HRESULT CheckElementMode(DWORD mode, DWORD storage_mode) {
  if (mode & STGM_TRANSACTED) return STG_E_INVALIDFUNCTION;
  if ((mode & ~kElementBits) != 0 || !IsAccess(mode)) return STG_E_INVALIDFLAG;
  if ((mode & kShareBits) != STGM_SHARE_EXCLUSIVE) return STG_E_INVALIDFLAG;
  return CanWrite(mode) && !CanWrite(storage_mode) ? STG_E_ACCESSDENIED : S_OK;
}

bool CanWrite(DWORD mode) { return (mode & kAccessBits) == STGM_READWRITE; }

HRESULT CheckElementName(LPCWSTR name) {
  if (!name || !*name) return STG_E_INVALIDNAME;
  std::size_t units = 0;
  for (; name[units]; ++units)
    if (units == compound::kMaxNameUnits) return STG_E_INVALIDNAME;
  return std::u16string_view(name, units).find_first_of(u"\\/:!") == std::u16string_view::npos ? S_OK
                                                                                               : STG_E_INVALIDNAME;
}

// ---- facts

FILETIME StorageTimeNow() {
  std::timespec now = {};
  std::timespec_get(&now, TIME_UTC);
  return FileTimeOf(now);
}

LPOLESTR CopyForCaller(std::u16string_view text) {
  auto* const copy = static_cast<WCHAR*>(std::malloc((text.size() + 1) * sizeof(WCHAR)));
  if (!copy) throw std::bad_alloc();
  std::copy(text.begin(), text.end(), copy);
  copy[text.size()] = 0;
  return copy;
}

void FillFacts(const StorageNode& node, LPOLESTR name, DWORD mode, STATSTG* facts) {
  *facts = {};
  facts->pwcsName = name;
  facts->type = node.is_storage ? STGTY_STORAGE : STGTY_STREAM;
  facts->cbSize.QuadPart = node.content.Size();
  facts->mtime = node.modified;
  facts->ctime = node.created;
  facts->grfMode = mode;
  facts->clsid = node.clsid;
  facts->grfStateBits = node.state_bits;
}
