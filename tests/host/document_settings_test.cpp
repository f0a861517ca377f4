// The settings of a document: in its file, in the library, and damaged.
#include "host/document/active_document.h"
#include "host/shell/failure.h"
#include "share/core/document_callbacks.h"
#include "share/env/setting_queries.h"
#include "tests/folders.h"
#include "tests/host/document_fixture.h"
#include "tests/host/document_records.h"

using namespace kestrova;
using namespace kvtest;
using Mode = DocumentLoader::Mode;

namespace {

int IntOf(const QFSettingsKey& settings, LPCTSTR name) {
  int value = -1;
  settings.GetValue(name, value);
  return value;
}

class DocumentSettings : public DocumentTest {
 protected:
  std::unique_ptr<HostDocument> Load(Mode mode, const std::string& file) {
    DocumentLoader loader(file, mode);
    auto document = loader.Load();
    findings_ = FindingsText(loader.Report());
    return document;
  }
  std::string findings_;
};

}  // namespace

TEST_F(DocumentSettings, AreInTheFileAndReachTheLibrary) {
  document_.Settings().SetValue(_T("SeqHoleFeat"), 2);
  document_.Settings().SetValue(_T("MaxFacetDeviation"), 0.00005);
  SaveDocument(document_, File("a.kvdoc"));
  const auto loaded = Load(Mode::kStrict, File("a.kvdoc"));
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
  const auto loaded = Load(Mode::kStrict, kvtest::SourceFile("tests/host/fixtures/storage38.0.kvdoc").string());
  EXPECT_EQ(findings_, "");
  EXPECT_EQ(IntOf(loaded->Settings(), _T("SeqHoleFeat")), 5);
}

TEST_F(DocumentSettings, DamageIsRefusedOrTheDefaultsAreTaken) {
  const std::string whole = StoredObject(document_.Settings()), intact = WithChecksum(whole);
  WriteDocumentFile(File("a.kvdoc"), DocumentBytes({}).Get(), &intact);
  EXPECT_NO_THROW(Load(Mode::kStrict, File("a.kvdoc")));
  EXPECT_EQ(findings_, "");
  std::string changed = intact;
  changed[100] ^= 1;
  QFColorSettings colors;
  const std::tuple<const char*, std::string, const char*> rows[] = {
      {"a changed byte", changed, "its checksum is wrong: bytes have changed"},
      {"nothing", "", "the data ends too early"},
      {"a null", WithChecksum(std::string(2, '\0')), "it has no settings tree"},
      {"cut off", WithChecksum(whole.substr(0, whole.size() - 1)), "the data ends too early"},
      {"a group", WithChecksum(StoredObject(colors)), "object of an unknown or unexpected class"},
  };
  for (const auto& [what, bytes, reason] : rows) {
    SCOPED_TRACE(what);
    WriteDocumentFile(File("a.kvdoc"), DocumentBytes({}).Get(), &bytes);
    EXPECT_EQ(IntOf(Load(Mode::kSalvage, File("a.kvdoc"))->Settings(), _T("SeqHoleFeat")), 5);
    EXPECT_NE(findings_.find(reason), std::string::npos) << findings_;
    EXPECT_THROW(Load(Mode::kStrict, File("a.kvdoc")), Failure);
  }
}
