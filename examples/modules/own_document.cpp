// A document with nodes of an own class: saved to a compound file, loaded again, and loaded from the first version of
// the class's record.
#include <kvshare/kvshare.h>
#include <kvshare/platform/storage.h>

#include <cstdio>
#include <map>
#include <memory>
#include <string>

// begin node
// A hole. Lengths are in millimetres.
class Hole : public QFObject {
  DECLARE_SERIAL(Hole)

 public:
  Hole() = default;
  Hole(double diameter, double depth) : m_diameter(diameter), m_depth(depth) {}
  double Diameter() const { return m_diameter; }
  double Depth() const { return m_depth; }

  CString GetClassNameW() override { return _T("Hole"); }
  // The record: class record, record of QFObject, diameter (double), and from schema 2 on the depth (double). A hole of
  // schema 1 goes through: its depth is 0.
  void Serialize(CArchive& ar) override;

 private:
  double m_diameter = 0;
  double m_depth = 0;
};

IMPLEMENT_SERIAL(Hole, QFObject, VERSIONABLE_SCHEMA | 2)

void Hole::Serialize(CArchive& ar) {
  ar.SerializeClass(RUNTIME_CLASS(Hole));
  const UINT schema = ar.GetObjectSchema();  // once, before the base: the base's record replaces it
  QFObject::Serialize(ar);
  if (ar.IsStoring()) {
    ar << m_diameter << m_depth;
    return;
  }
  ar >> m_diameter;
  m_depth = 0;
  if (schema > 1) ar >> m_depth;
}
// end node

// begin document
// A document owns its nodes, their indexer and the ids.
class Part : public QFObject {
  DECLARE_SERIAL(Part)

 public:
  ~Part() override {
    while (!m_holes.IsEmpty()) delete m_holes.RemoveHead();
  }
  CString GetClassNameW() override { return _T("Part"); }
  void Serialize(CArchive& ar) override {
    ar.SerializeClass(RUNTIME_CLASS(Part));
    ar.GetObjectSchema();  // there is one schema only; reading it ends the record
    QFObject::Serialize(ar);
    if (ar.IsStoring()) {
      ar << m_lastId;
    } else {
      ar >> m_lastId;
    }
    m_indexer.Serialize(ar);
    m_holes.SerializeOwned(ar, RUNTIME_CLASS(Hole));
  }

  void Add(std::unique_ptr<Hole> hole) {
    hole->SetOwner(this);
    hole->onCreate();  // asks for an id and enters the node in the indexer
    m_holes.AddTail(hole.get());
    static_cast<void>(hole.release());
  }
  DWORD NewId() { return ++m_lastId; }
  QFObjectIndexerHelper& Indexer() { return m_indexer; }
  const CObList& Holes() const { return m_holes; }

 private:
  DWORD m_lastId = 0;
  QFObjectIndexerHelper m_indexer;
  CObList m_holes;
};

IMPLEMENT_SERIAL(Part, QFObject, VERSIONABLE_SCHEMA | 1)
// end document

namespace {

Part* g_part = nullptr;  // the active document

void RegisterCallbacks() {
  qfshare_init([] { return g_part ? &g_part->Indexer() : nullptr; }, nullptr, nullptr, nullptr);
  QFShareRegisterDocCBK(
      nullptr, /*nextObjectId=*/[]() -> unsigned long { return g_part ? g_part->NewId() : 0; },
      /*activeDocument=*/[]() -> QFObject* { return g_part; }, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
      nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
}

constexpr LPCTSTR kStream = _T("Part");

// begin save
// Throws CException. An old file stays as it was until the commit.
void Save(Part& part, LPCTSTR path) {
  StructuredStorage storage;
  IStream* stream = nullptr;
  constexpr DWORD kMode = STGM_READWRITE | STGM_SHARE_EXCLUSIVE | STGM_CREATE;
  if (!storage.CreateFileW(path, kMode | STGM_TRANSACTED) || !storage.CreateStream(&stream, kStream, kMode))
    throw CFileException(CFileException::genericException, storage.GetLastResult(), path);
  COleStreamFile file(stream);
  InitialiseSerializationStatus(0);
  CArchive ar(&file, CArchive::store);
  ar.WriteObject(&part);
  ar.Close();
  file.Close();
  // A reference that can't be stored became null without an exception: only the status says so.
  if (IsErrorDetected()) AfxThrowArchiveException(CArchiveException::genericException, path);
  if (FAILED(storage.GetRootStorage()->Commit(STGC_DEFAULT))) throw CFileException(CFileException::diskFull, -1, path);
}
// end save

// begin load
// Throws CException. Then the archive has deleted every object that it had created.
std::unique_ptr<Part> LoadFrom(CFile& file) {
  struct NotifyEnd {
    ~NotifyEnd() { QFSerializeNotify::Clear(); }
  } notifyEnd;
  InitialiseSerializationStatus(0);
  CArchive ar(&file, CArchive::load);
  std::unique_ptr<Part> part(static_cast<Part*>(ar.ReadObject(RUNTIME_CLASS(Part))));
  if (!part) AfxThrowArchiveException(CArchiveException::badClass);
  QFSerializeNotify::PostLoadFromStorageNotify();
  std::map<CString, int> counts = {{_T("Hole"), int(part->Holes().GetCount())}};
  part->Indexer().CorrectIndexersReferences(counts);  // old documents lack them
  return part;
}

std::unique_ptr<Part> Load(LPCTSTR path) {
  StructuredStorage storage;
  IStream* stream = nullptr;
  constexpr DWORD kMode = STGM_READ | STGM_SHARE_EXCLUSIVE;
  if (!storage.OpenFile(path, kMode) || !storage.OpenStream(&stream, kStream, kMode))
    throw CFileException(CFileException::fileNotFound, storage.GetLastResult(), path);
  COleStreamFile file(stream);
  return LoadFrom(file);
}
// end load

void Print(const char* title, const Part& part) {
  std::printf("%s\n", title);
  for (POSITION at = part.Holes().GetHeadPosition(); at;) {
    auto& hole = static_cast<Hole&>(*part.Holes().GetNext(at));
    std::printf("  %s: diameter %g, depth %g\n", ToUtf8(hole.GetObjNamePlusObjID()).c_str(), hole.Diameter(),
                hole.Depth());
  }
}

// begin old
// The archive of a part with one hole, as the first version of this program wrote it: Hole had schema 1.
constexpr unsigned char kFirstVersion[] = {
    0xFF, 0xFF, 0x01, 0x00, 0x04, 0x00, 0x50, 0x61, 0x72, 0x74, 0x01, 0x80, 0xFF, 0xFF, 0x08, 0x00, 0x08, 0x00, 0x51,
    0x46, 0x4F, 0x62, 0x6A, 0x65, 0x63, 0x74, 0xFF, 0xFF, 0x02, 0x00, 0x0C, 0x00, 0x51, 0x46, 0x42, 0x61, 0x73, 0x65,
    0x4F, 0x62, 0x6A, 0x65, 0x63, 0x74, 0x00, 0x00, 0xFF, 0xFE, 0xFF, 0x00, 0xFF, 0xFE, 0xFF, 0x00, 0xFF, 0xFE, 0xFF,
    0x00, 0xFF, 0xFE, 0xFF, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xFF, 0xFE, 0xFF, 0x00,
    0x00, 0x00, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0xFF, 0xFE, 0xFF, 0x00, 0x01, 0x00, 0x00, 0x00, 0xFF,
    0xFF, 0x02, 0x00, 0x15, 0x00, 0x51, 0x46, 0x4F, 0x62, 0x6A, 0x65, 0x63, 0x74, 0x49, 0x6E, 0x64, 0x65, 0x78, 0x65,
    0x72, 0x48, 0x65, 0x6C, 0x70, 0x65, 0x72, 0x04, 0x80, 0x01, 0x00, 0xFF, 0xFF, 0x02, 0x00, 0x0F, 0x00, 0x51, 0x46,
    0x4F, 0x62, 0x6A, 0x65, 0x63, 0x74, 0x49, 0x6E, 0x64, 0x65, 0x78, 0x65, 0x72, 0x06, 0x80, 0x04, 0x80, 0xFF, 0xFE,
    0xFF, 0x04, 0x48, 0x00, 0x6F, 0x00, 0x6C, 0x00, 0x65, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01,
    0x00, 0x00, 0x00, 0x01, 0x00, 0xFF, 0xFF, 0x01, 0x00, 0x04, 0x00, 0x48, 0x6F, 0x6C, 0x65, 0x08, 0x80, 0x03, 0x80,
    0x04, 0x80, 0x00, 0x00, 0xFF, 0xFE, 0xFF, 0x00, 0xFF, 0xFE, 0xFF, 0x00, 0xFF, 0xFE, 0xFF, 0x00, 0xFF, 0xFE, 0xFF,
    0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x02, 0x00, 0xFF, 0xFE, 0xFF, 0x00, 0x00, 0x00, 0x00, 0x00,
    0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0xFF, 0xFE, 0xFF, 0x04, 0x48, 0x00, 0x6F, 0x00, 0x6C, 0x00, 0x65, 0x00, 0x00,
    0x00, 0x00, 0x00, 0x00, 0x00, 0x18, 0x40};
// end old

}  // namespace

// begin main
int main() {
  InitShareDll();
  RegisterCallbacks();
  try {
    Part part;
    g_part = &part;
    part.Add(std::make_unique<Hole>(6, 20));
    part.Add(std::make_unique<Hole>(8.5, 12));
    Save(part, _T("sample.part"));
    Print("saved", part);
    const std::unique_ptr<Part> loaded = Load(_T("sample.part"));
    Print("loaded", *loaded);

    std::string bytes(std::begin(kFirstVersion), std::end(kFirstVersion));
    CMemFile file(reinterpret_cast<BYTE*>(bytes.data()), bytes.size());
    const std::unique_ptr<Part> old = LoadFrom(file);
    Print("first version", *old);

    CMemFile cut(reinterpret_cast<BYTE*>(bytes.data()), bytes.size() / 2);
    LoadFrom(cut);
  } catch (const CException& failure) {
    std::printf("half of it: %s\n", failure.what());
  }
  g_part = nullptr;
}
// end main
