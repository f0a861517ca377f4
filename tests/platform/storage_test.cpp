// What compound files promise on every platform: modes, names, streams and commits; files as other programs write them,
// cut files, and streams that are changed at random.
#include "tests/platform/storage_bytes.h"

namespace kvtest {
namespace {

TEST_F(CompoundFiles, GiveBackWhatWasStored) {
  // Around the sizes where the format changes the way of storing.
  const std::size_t kSizes[] = {0, 63, 64, 65, 511, 512, 513, 4095, 4096, 4097, 131072, 16000005};
  std::string bytes(16000005, '\0');  // beyond 15.5 MB the list of the table's sectors has sectors of its own
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = char(i * 7 + i / 251);
  {
    const Storage root = Create(), inner = CreateStorage(root, _T("Inner"));
    for (const std::size_t size : kSizes)
      Put(size % 2 ? root : inner, _T("s") + Text(size % 29, _T('x')), bytes.substr(0, size));
    ASSERT_EQ(root->Commit(STGC_DEFAULT), S_OK);
  }
  const Storage root = Open();
  ASSERT_TRUE(root) << std::hex << result_;
  const Storage inner = OpenStorage(root, _T("inner"));
  ASSERT_TRUE(inner);
  for (const std::size_t size : kSizes)
    EXPECT_EQ(Get(size % 2 ? root : inner, _T("S") + Text(size % 29, _T('X'))), bytes.substr(0, size)) << size;
}

TEST_F(CompoundFiles, RefuseModesThatDoNotExist) {
  const std::tuple<DWORD, HRESULT, HRESULT> kRoots[] = {
      {STGM_READWRITE | STGM_SHARE_EXCLUSIVE, S_OK, S_OK},
      {STGM_READWRITE, STG_E_INVALIDFLAG, STG_E_INVALIDFLAG},
      {STGM_READ | STGM_SHARE_DENY_WRITE, STG_E_INVALIDFLAG, S_OK},
      {STGM_READWRITE | STGM_SHARE_DENY_WRITE | STGM_TRANSACTED, S_OK, S_OK},
      {kWrite | 0x3, STG_E_INVALIDFLAG, STG_E_INVALIDFLAG},
  };
  ASSERT_EQ(Create("there.bin")->Commit(0), S_OK);
  int number = 0;
  for (const auto& [mode, create, open] : kRoots) {
    EXPECT_EQ(ResultOf(Create("new" + std::to_string(++number), mode)), create) << std::hex << mode;
    EXPECT_EQ(ResultOf(Open("there.bin", mode)), open) << std::hex << mode;
  }
  const Storage root = Create();
  EXPECT_EQ(ResultOf(CreateStream(root, _T("s"), STGM_READWRITE)), STG_E_INVALIDFLAG)
      << "an element is shared with nobody";
  EXPECT_EQ(ResultOf(CreateStream(root, _T("s"), kWrite | STGM_TRANSACTED)), STG_E_INVALIDFUNCTION);
}

TEST_F(CompoundFiles, ReportWhyAFileDoesNotOpen) {
  folder_.Write("text.bin", std::string(2000, 'x'));
  std::filesystem::create_directory(folder_.Path() / "folder");
  const std::pair<const char*, HRESULT> kCases[] = {{"none.bin", STG_E_FILENOTFOUND},
                                                    {"none/none.bin", STG_E_PATHNOTFOUND},
                                                    {"text.bin", STG_E_FILEALREADYEXISTS},
                                                    {"folder", STG_E_ACCESSDENIED}};
  for (const auto& [name, result] : kCases) EXPECT_EQ(ResultOf(Open(name)), result) << name;
  EXPECT_EQ(ResultOf(Create("text.bin", kWrite)), STG_E_FILEALREADYEXISTS);
}

TEST_F(CompoundFiles, CompareNamesWithoutCase) {
  const Storage root = Create();
  const Text longest(31, _T('n'));
  Put(root, longest, "long");
  EXPECT_EQ(Get(root, Text(31, _T('N'))), "long");
  EXPECT_EQ(ResultOf(CreateStorage(root, Text(31, _T('N')))), STG_E_FILEALREADYEXISTS)
      << "streams and storages share their names";
  Put(root, _T("ſ"), "no S");
  EXPECT_EQ(ResultOf(OpenStream(root, _T("S"))), STG_E_FILENOTFOUND);
}

TEST_F(CompoundFiles, CompareOtherLettersWithoutCase) {
  const Storage root = Create();
  Put(root, _T("\u00C4pfel \u4E2D"), "umlaut");
  EXPECT_EQ(Get(root, _T("\u00E4PFEL \u4E2D")), "umlaut");
  EXPECT_EQ(ResultOf(CreateStorage(root, _T("\u00E4pfel \u4E2D"))), STG_E_FILEALREADYEXISTS);
}

TEST_F(CompoundFiles, RefuseNamesThatAreNone) {
  const Storage root = Create();
  for (const Text& bad :
       {Text(), Text(32, _T('n')), Text(_T("a/b")), Text(_T("a\\b")), Text(_T("a:b")), Text(_T("a!b"))})
    EXPECT_EQ(ResultOf(CreateStream(root, bad)), STG_E_INVALIDNAME) << testing::PrintToString(bad);
}

TEST_F(CompoundFiles, OpenAnElementOnceAndWithTheStoragesRightsOnly) {
  {
    const Storage root = Create();
    Put(root, _T("s"), "12");
    const Stream open = OpenStream(root, _T("s"));
    ASSERT_TRUE(open);
    EXPECT_EQ(ResultOf(OpenStream(root, _T("s"))), STG_E_ACCESSDENIED);
    EXPECT_EQ(open->Write("3", 1, nullptr), STG_E_ACCESSDENIED);
    EXPECT_EQ(open->SetSize(Size(0)), STG_E_ACCESSDENIED);
    EXPECT_EQ(ResultOf(OpenStream(root, _T("t"))), STG_E_FILENOTFOUND);
  }
  const Storage root = Open();
  EXPECT_EQ(ResultOf(CreateStream(root, _T("new"), kRead)), STG_E_ACCESSDENIED);
  EXPECT_EQ(root->DestroyElement(_T("s")), STG_E_ACCESSDENIED);
  EXPECT_EQ(Get(root, _T("s")), "12");
}

TEST_F(CompoundFiles, ReplaceAndDestroyElements) {
  const Storage root = Create();
  {
    const Storage inner = CreateStorage(root, _T("x"));
    Put(inner, _T("y"), "1");
  }
  const Storage open = OpenStorage(root, _T("x"), kWrite);
  EXPECT_EQ(root->DestroyElement(_T("none")), STG_E_FILENOTFOUND);
  EXPECT_EQ(root->DestroyElement(_T("X")), S_OK);
  EXPECT_EQ(ResultOf(CreateStream(open, _T("z"))), STG_E_REVERTED) << "nothing is left below what is gone";
  Put(root, _T("s"), "old");
  EXPECT_TRUE(CreateStream(root, _T("S"), kReplace));
  EXPECT_EQ(Get(root, _T("s")), "");
  EXPECT_EQ(ResultOf(OpenStorage(root, _T("x"))), STG_E_FILENOTFOUND);
}

TEST_F(CompoundFiles, TransactedRootsAreSavedWhenCommitted) {
  constexpr DWORD kTransacted = kWrite | STGM_TRANSACTED;
  {
    const Storage root = Create("a.bin", kTransacted | STGM_CREATE);
    Put(root, _T("s"), "1");
    ASSERT_EQ(root->Commit(STGC_DEFAULT), S_OK);
    Put(root, _T("t"), "dropped");
  }
  const Storage root = Open();
  EXPECT_EQ(Get(root, _T("s")), "1");
  EXPECT_EQ(ResultOf(OpenStream(root, _T("t"))), STG_E_FILENOTFOUND);
}

TEST_F(CompoundFiles, ReportTheFactsOfElements) {
  const Storage root = Create();
  Put(root, _T("Stream"), "12345");
  STATSTG facts;
  ASSERT_EQ(root->Stat(&facts, STATFLAG_DEFAULT), S_OK);
  EXPECT_EQ(Text(facts.pwcsName), PathOf("a.bin"));
  EXPECT_EQ(facts.type, STGTY_STORAGE);
  EXPECT_EQ(facts.grfMode, kWrite);
  CoTaskMemFree(facts.pwcsName);
  ASSERT_EQ(CreateStorage(root, _T("Storage"))->Stat(&facts, STATFLAG_NONAME), S_OK);
  EXPECT_EQ(facts.pwcsName, nullptr);
  ASSERT_EQ(OpenStream(root, _T("stream"))->Stat(&facts, STATFLAG_NONAME), S_OK);
  EXPECT_EQ(facts.type, STGTY_STREAM);
}

TEST_F(CompoundFiles, StoragesKnowWhenTheyWereMade) {
  const Storage root = Create();
  STATSTG facts = {};
  ASSERT_EQ(CreateStorage(root, _T("Storage"))->Stat(&facts, STATFLAG_NONAME), S_OK);
  EXPECT_NE(facts.ctime.dwHighDateTime, 0u);
}

TEST_F(CompoundBytes, AreReadInBothVersions) {
  EXPECT_EQ(WhatOf(WholeFile()), "opens, whole, whole");
  EXPECT_EQ(WhatOf(WholeFileOfVersion4()), "opens, whole, whole");
}

TEST_F(CompoundBytes, NoTruncatedPrefixIsWhole) {
  const std::string whole = WholeFile();
  for (std::size_t bytes = 0; bytes < kFat; bytes += 100)  // without its allocation table
    EXPECT_NE(WhatOf(whole.substr(0, bytes)), "opens, whole, whole") << bytes;
}

TEST_F(CompoundBytes, RandomChangesOfAStreamMatchATextsOwn) { ChangeAtRandom(/*with_gaps=*/false); }

}  // namespace
}  // namespace kvtest
