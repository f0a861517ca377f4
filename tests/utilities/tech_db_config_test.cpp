// Technology databases in memory: entries, their list, their connection strings.
#include "share/utilities/tech_db_config.h"

#include <gtest/gtest.h>

#include "companions/database/connection_strings.h"

namespace {

using Data = QFTechDBConfigData;

// One entry per character, active for 'a'; its path is its index.
QFTechDBConfigInfo List(std::string_view entries) {
  QFTechDBConfigInfo info;
  for (const char kind : entries) {
    auto* entry = new Data;
    entry->SetActiveFlag(kind == 'a');
    entry->SetFilePath(CString(TCHAR('0' + info.GetCount())));
    EXPECT_EQ(info.AddTechDBConfigData(entry), 1);
  }
  return info;
}

TEST(TechDBConfig, DisplayNamesTellNoPassword) {
  Data entry;
  entry.SetFilePath(_T("C:\\t.kvdb"));
  entry.SetConnectionString(ServerConnection(_T("MYDATABASE"), _T("tech"), _T("u"), _T("secret")));
  for (const int type : {QF_TECHDB_SQLITE, QF_TECHDB_ACCESS}) {
    entry.SetDatabaseType(type);
    EXPECT_EQ(entry.GetDisplayName(), _T("C:\\t.kvdb"));
  }
  entry.SetDatabaseType(QF_TECHDB_SQLSERVER);
  EXPECT_EQ(entry.GetDisplayName(), _T("SERVER=MYDATABASE;DATABASE=tech"));
  const std::pair<LPCTSTR, LPCTSTR> parts[] = {{_T("DRIVER={x};DATABASE=d;SERVER=s"), _T("SERVER=s;DATABASE=d")},
                                               {_T("Server=s;Database=d;"), _T(";")},
                                               {_T("SERVER=s;"), _T("SERVER=s;")},
                                               {_T(""), _T(";")}};
  for (const auto& [connection, expected] : parts) EXPECT_EQ(ServerPartsOfConnection(connection), expected);
}

TEST(TechDBConfig, TheActiveEntryIsTheFirstMarkedOrTheLast) {
  const std::pair<const char*, LPCTSTR> rows[] = {{"--", _T("1")}, {"-aa-", _T("1")}, {"a--", _T("0")}};
  for (const auto& [entries, path] : rows) {
    const QFTechDBConfigInfo info = List(entries);
    ASSERT_NE(info.GetActiveConfigData(), nullptr) << entries;
    EXPECT_EQ(info.GetActiveConfigData()->GetFilePath(), path) << entries;
    EXPECT_EQ(info.GetTechDBConfigData(info.GetCount()), nullptr);
    EXPECT_EQ(info.GetTechDBConfigData(-1), nullptr);
  }
  QFTechDBConfigInfo info = List("a");
  info.ClearTechDBInfo();
  EXPECT_EQ(info.GetActiveConfigData(), nullptr);
  EXPECT_EQ(info.AddTechDBConfigData(nullptr), 0);
  EXPECT_EQ(info.GetCount(), 0);
}

TEST(TechDBConfig, CopiesAreDeepAndChangesShow) {
  QFTechDBConfigInfo info = List("a-");
  QFTechDBConfigInfo copy = info;
  const std::unique_ptr<QFTechDBConfigInfo> clone(info.Clone());
  EXPECT_NE(copy.GetTechDBConfigData(0), info.GetTechDBConfigData(0));
  EXPECT_EQ(info.IsActiveTechDbChange(&copy), 0);
  copy.GetTechDBConfigData(1)->SetDescription(_T("d"));
  EXPECT_EQ(info.IsActiveTechDbChange(&copy), 1);
  EXPECT_EQ(info.IsActiveTechDbChange(clone.get()), 0);
  EXPECT_EQ(info.CopyFrom(&copy), 1);
  EXPECT_EQ(info.GetTechDBConfigData(1)->GetDescription(), _T("d"));
  const QFTechDBConfigInfo longer = List("a--");
  for (const QFTechDBConfigInfo* other : {(const QFTechDBConfigInfo*)nullptr, &longer}) {
    EXPECT_EQ(info.CopyFrom(other), 0);
    EXPECT_EQ(info.IsActiveTechDbChange(other), 0);
  }
  EXPECT_EQ(info.IsActiveTechDbChange(&copy), 0) << "nothing changed";
  info = *&info;
  EXPECT_EQ(info.GetCount(), 2);
  const std::unique_ptr<Data> entry(info.GetTechDBConfigData(1)->Clone());
  EXPECT_EQ(*entry, *info.GetTechDBConfigData(1));
}

}  // namespace
