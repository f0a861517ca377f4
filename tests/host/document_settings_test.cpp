// The settings of a document: in its file, in the library, and damaged.
#include "framework/archive.h"
#include "framework/stream_file.h"
#include "host/document/active_document.h"
#include "host/document/checksum.h"
#include "host/document/settings_stream.h"
#include "host/shell/failure.h"
#include "platform/paths.h"
#include "share/core/document_callbacks.h"
#include "share/env/setting_queries.h"
#include "tests/archive_bytes.h"
#include "tests/host/document_fixture.h"

using namespace kestrova;
using Mode = DocumentLoader::Mode;

namespace {

int IntOf(const QFSettingsKey& settings, LPCTSTR name) {
  int value = -1;
  settings.GetValue(name, value);
  return value;
}

class DocumentSettings : public kvtest::DocumentTest {
 protected:
  // Saves the document, then replaces its settings by the bytes.
  void SaveWith(const std::string& bytes) {
    SaveDocument(document_, File("a.kvdoc"));
    IStorage* root = nullptr;
    IStream* stream = nullptr;
    const auto path = ProductPathFromSystem(File("a.kvdoc"));
    ASSERT_EQ(StgOpenStorage(path.c_str(), nullptr, STGM_READWRITE | STGM_SHARE_EXCLUSIVE, nullptr, 0, &root), S_OK);
    ASSERT_EQ(root->CreateStream(kSettingsStream, STGM_READWRITE | STGM_SHARE_EXCLUSIVE | STGM_CREATE, 0, 0, &stream),
              S_OK);
    COleStreamFile(stream).Write(bytes.data(), UINT(bytes.size()));
    ASSERT_EQ(root->Commit(STGC_DEFAULT), S_OK);
    root->Release();
  }
  std::unique_ptr<HostDocument> Load(Mode mode, std::string file = "") {
    DocumentLoader loader(file.empty() ? File("a.kvdoc") : file, mode);
    auto document = loader.Load();
    findings_ = FindingsText(loader.Report());
    return document;
  }
  std::string findings_;
};

std::string WithChecksum(const std::string& bytes) {
  Checksum checksum;
  checksum.Add(bytes.data(), bytes.size());
  const DWORD sum = checksum.Get();
  return bytes + std::string(reinterpret_cast<const char*>(&sum), sizeof sum);
}

}  // namespace

TEST_F(DocumentSettings, AreInTheFileAndReachTheLibrary) {
  document_.Settings().SetValue(_T("SeqHoleFeat"), 2);
  document_.Settings().SetValue(_T("MaxFacetDeviation"), 0.00005);
  SaveDocument(document_, File("a.kvdoc"));
  const auto loaded = Load(Mode::kStrict);
  EXPECT_EQ(findings_, "");
  EXPECT_EQ(IntOf(loaded->Settings(), _T("SeqHoleFeat")), 2);
  EXPECT_EQ(IntOf(loaded->Settings(), _T("SeqMultiSurfaceFeat")), 6);
  {
    const ActiveDocument active(loaded.get());
    EXPECT_EQ(GetActiveDocSettingsCB(), &loaded->Settings());
    EXPECT_EQ(GetSimulationSettingsFacetDeviation(), 0.00005);
  }
  const ActiveDocument none(nullptr);
  EXPECT_EQ(GetActiveDocSettingsCB(), nullptr);
}

TEST_F(DocumentSettings, OldDocumentHasTheDefaults) {
  const auto loaded = Load(Mode::kStrict, KV_TEST_FILES "/fixtures/storage38.0.kvdoc");
  EXPECT_EQ(findings_, "");
  EXPECT_EQ(IntOf(loaded->Settings(), _T("SeqHoleFeat")), 5);
}

TEST_F(DocumentSettings, DamageIsRefusedOrTheDefaultsAreTaken) {
  const std::string whole =
      kvtest::Store([&](CArchive& ar) { ar.WriteObject(static_cast<const CObject*>(&document_.Settings())); });
  std::string changed = WithChecksum(whole);
  changed[100] ^= 1;
  QFColorSettings colors;
  const struct {
    const char* what;
    std::string bytes;
    const char* reason;
  } rows[] = {
      {"a changed byte", changed, "its checksum is wrong: bytes have changed"},
      {"nothing", "", "the data ends too early"},
      {"a null", WithChecksum(std::string(2, '\0')), "it has no settings tree"},
      {"cut off", WithChecksum(whole.substr(0, whole.size() - 1)), "the data ends too early"},
      {"a group", WithChecksum(kvtest::Store([&](CArchive& ar) { ar.WriteObject(&colors); })),
       "object of an unknown or unexpected class"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    SaveWith(row.bytes);
    EXPECT_EQ(IntOf(Load(Mode::kSalvage)->Settings(), _T("SeqHoleFeat")), 5);
    EXPECT_NE(findings_.find(row.reason), std::string::npos) << findings_;
    EXPECT_THROW(Load(Mode::kStrict), Failure);
  }
}
