// kestrova techdb: list, choice and contents, in a data folder of the test.
#include <gmock/gmock.h>

#include "platform/paths.h"
#include "share/core/registry_keys.h"
#include "tests/folders.h"
#include "tests/host/json_schema.h"
#include "tests/host/scratch_installation.h"

namespace {

using namespace kvtest;
using testing::HasSubstr;

class TechDBCommand : public CommandTest {
 protected:
  TechDBCommand() : CommandTest("techdb") {
    Keep(_T("KVDataPath"), product_);
    std::filesystem::create_directory(folder_.Path() / "TechDB");
    std::filesystem::copy(kvtest::LibraryFile("TechDB/TechDB.kvdb"), folder_.Path() / "TechDB");
    Configure(
        "<setting databaseType='sqlite' Default='True'><filePath>TechDB.kvdb</filePath><description>ours</description>"
        "</setting><setting databaseType='ms-access'><filePath>old.mdb</filePath></setting><setting databaseType='sql'>"
        "<serverID>127.0.0.1,1</serverID><databaseName>tech</databaseName><userID>eve</userID>"
        "<password>unavailable</password></setting>");
  }
  static void Keep(LPCTSTR name, const std::string& text) { KeepText(HKEY_CURRENT_USER, kVersionKey, name, text); }
  void Configure(const std::string& settings) const {
    folder_.Write("TechDB/database.config",
                  "<c><applicationSettings><!-- -->" + settings + "</applicationSettings></c>");
  }
  nlohmann::json Json(const std::vector<std::string>& words) const {
    const nlohmann::json answer = CommandTest::Json(words);
    EXPECT_EQ(SchemaFault("techdb-" + words.front(), answer.dump()), "");
    return answer;
  }
  // The one line on stderr of a refused command.
  std::string Refusal(const std::vector<std::string>& words, int exit_code = 3) const {
    const RunResult result = Run(words);
    EXPECT_EQ(result, (RunResult{exit_code, "", result.err}));
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result;
    return result.err;
  }

  const std::string product_ = ScratchInstallation::Product(folder_.Path().string()) + "\\";
  const std::string tech_ = folder_.Path().string() + "/TechDB/";
};

TEST_F(TechDBCommand, ListsAndActivates) {
  EXPECT_EQ(Out({"list"}), "      type       database" + std::string(tech_.size() + 9, ' ') + "  description\n" +
                               "*  1  sqlite     " + tech_ + "TechDB.kvdb" + std::string(6, ' ') + "  ours\n" +
                               "   2  ms-access  " + tech_ + "old.mdb (missing)\n" +
                               "   3  sql        SERVER=127.0.0.1,1;DATABASE=tech\n");
  EXPECT_EQ(Run({"activate", "2"}),
            Refused("the file of database 2 is missing: " + tech_ + "old.mdb; --force activates it all the same"));
  EXPECT_EQ(Run({"activate", "1"}), Prints("1 -> 1  " + tech_ + "TechDB.kvdb\n"));
  EXPECT_EQ(Run({"activate", "2", "--force"}), Prints("1 -> 2  " + tech_ + "old.mdb\n"));
  EXPECT_THAT(ReadFile(folder_.Path() / "TechDB/database.config"),
              HasSubstr("'ms-access' Default=\"True\"><filePath>"));
  const auto list = Json({"list"});
  EXPECT_EQ(list["mode"], "configuration");
  ASSERT_EQ(list["databases"].size(), 3u);
  EXPECT_EQ(list["databases"][1], With(list["databases"][1], {{"active", true}, {"missing", true}}));
  EXPECT_EQ(list["databases"][2]["name"], "SERVER=127.0.0.1,1;DATABASE=tech");
  std::filesystem::create_directory(tech_ + "old.mdb");
  EXPECT_THAT(Out({"list"}), HasSubstr("old.mdb (missing, a folder has its name)\n"));
  EXPECT_EQ(Run({"test"}), Refused(tech_ + "old.mdb is a folder, not a database file"));
  const auto activated = Json({"activate", "1"});
  EXPECT_EQ(activated, With(activated, {{"from", 2}, {"to", 1}, {"database", {{"missing", false}}}}));
  EXPECT_EQ(Run({"activate", "4"}), Refused("there is no database 4; " + tech_ + "database.config lists 3", 1));
}

TEST_F(TechDBCommand, ConnectsAndShowsWhatIsInIt) {
  EXPECT_THAT(Out({"test"}),
              testing::ContainsRegex("^database  [^\n]*TechDB.kvdb\ndriver    Kestrova SQLite3 ODBC Driver [^\n]*\n"
                                     "version   SQLite 3[0-9.]*\nconnected in [0-9.]* ms\n$"));
  const auto test = Json({"test"});
  EXPECT_EQ(test["driver"], "Kestrova SQLite3 ODBC Driver");
  EXPECT_THAT(Out({"tables", "--count"}), HasSubstr("Materials       table       12\n"));
  EXPECT_GT(Json({"tables"})["tables"].size(), 3u);
  EXPECT_EQ(Out({"query", "SELECT ToolID, Name, DiameterMm FROM Tools WHERE ToolID IN (6, 9, 10)", "--rows", "2"}),
            "ToolID  Name         DiameterMm\n"
            "     6  Drill D6.8          6.8\n"
            "     9  CNMG 120408\n"
            "the first 2 rows; --rows shows more\n");
  EXPECT_EQ(Json({"query", "SELECT 9 AS a, 'b', NULL"}),
            nlohmann::json::parse(R"({"columns":["a","'b'","NULL"],"rows":[[9,"b",null]],"more":false})"));
  EXPECT_EQ(Out({"query", "SELECT 'x\x1B\u009By' AS \"a\x1B[b\""}), "a [b\nx  y\n") << "nothing for the terminal";
}

TEST_F(TechDBCommand, AQueryChangesNothing) {
  const std::filesystem::path file = folder_.Path() / "TechDB/TechDB.kvdb";
  const std::string before = ReadFile(file);
  const std::string alone =
      "the database is open for reading only: a query begins with SELECT, WITH, VALUES or EXPLAIN, not with \"";
  for (const std::string word : {"Delete FROM Tools", "PRAGMA query_only = 0", "ATTACH 'other.kvdb' AS other"})
    EXPECT_EQ(Run({"query", "/* SELECT */ -- SELECT\n(" + word}),
              Refused(alone + word.substr(0, word.find(' ')) + "\""));
  EXPECT_EQ(Run({"query", ""}), Refused(alone + "\""));
  EXPECT_EQ(Run({"query", "WITH one AS (SELECT 1) DELETE FROM Tools"}),
            Refused("cannot run the statement: attempt to write a readonly database (8) (HY000)"));
  EXPECT_EQ(Run({"query", "SELECT 1; DELETE FROM Tools"}),
            Refused("cannot run the statement: only one SQL statement allowed (HY000)"));
  Out({"query", "VALUES (1), (2)"});
  EXPECT_EQ(ReadFile(file), before);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_.Path() / "TechDB"), {}), 2) << "no new file";
}

TEST_F(TechDBCommand, FailuresAreOneLine) {
  EXPECT_EQ(Run({"query", "SELECT * FROM Absent"}),
            Refused("cannot run the statement: no such table: Absent (1) (HY000)"));
  Out({"activate", "2", "--force"});
  EXPECT_EQ(Run({"test"}), Refused("there is no database file " + tech_ + "old.mdb"));
  folder_.Write("TechDB/old.mdb", std::string(5000, 'x'));
  EXPECT_EQ(Run({"test"}), Refused(tech_ + "old.mdb is not an Access database or cannot be read"));
  Out({"activate", "3"});
  const std::string refusal = Refusal({"test"});
  EXPECT_THAT(refusal, HasSubstr("kestrova: cannot open database tech on server 127.0.0.1,1: "));
  EXPECT_THAT(refusal, testing::Not(HasSubstr("unavailable"))) << "the password";
  const std::pair<const char*, std::string> faults[] = {
      {"\n<setting databaseType='oracle'/>",
       tech_ + "database.config:2: databaseType \"oracle\" is not known: use sqlite, ms-access or sql"},
      {"</a>", tech_ + "database.config:1: start-end tags mismatch"}};
  for (const auto& [settings, text] : faults) {
    Configure(settings);
    for (const char* word : {"list", "test"}) EXPECT_THAT(Refusal({word}), HasSubstr(text));
  }
  std::filesystem::remove(tech_ + "database.config");
  std::filesystem::rename(tech_ + "TechDB.kvdb", tech_ + "away");
  for (const char* word : {"list", "test"}) EXPECT_THAT(Refusal({word}), HasSubstr("TechDB.kvdb exists; install one"));
  std::filesystem::rename(tech_ + "away", tech_ + "TechDB.kvdb");
  std::filesystem::create_directory(tech_ + "database.config");
  EXPECT_THAT(Refusal({"list"}), HasSubstr("cannot read " + tech_ + "database.config: it is a folder"));
  std::filesystem::remove(tech_ + "database.config");
  Configure("<setting databaseType='sqlite'><filePath>TechDB.kvdb;DSN=evil</filePath></setting>");
  EXPECT_THAT(Refusal({"test"}), HasSubstr("the path of a database file cannot contain a semicolon"));
  Configure("");
  EXPECT_THAT(Refusal({"tables"}), HasSubstr("there is no technology database: " + tech_ +
                                             "database.config names none; add one, or remove the file: then "));
  EXPECT_EQ(Out({"list"}), "there is no technology database: " + tech_ + "database.config names none\n");
  EXPECT_THAT(Refusal({"activate", "1"}, 1), HasSubstr("there is no database 1; "));
  Keep(_T("TechDBForms"), "TechDBForms.mde (32bit)");
  EXPECT_EQ(Run({"list"}), Refused("TechDBForms.mde could not be found at " + product_ + "lang\\English\\"));
}

// A file written by Access, read by the driver of the installation.
TEST_F(TechDBCommand, AccessFilesAreRead) {
  const std::filesystem::path forms = kvtest::SourceFile("tests/host/fixtures/TechDBForms.mdb");
  std::filesystem::copy(forms, folder_.Path() / "TechDB/old.mdb");
  Out({"activate", "2", "--force"});
  EXPECT_THAT(Out({"test"}), HasSubstr("\ndriver    Microsoft Access Driver (*.mdb, *.accdb)\nversion   MDBTOOLS "));
  EXPECT_EQ(Out({"tables", "--count"}), "name                  kind   records\nTechDBFormsPathTable  table        1\n");
  EXPECT_EQ(Out({"query", "SELECT [path], UserId FROM TechDBFormsPathTable; "}),
            "path         UserId\nD:\\T\\DB.mdb       1\n");
  std::filesystem::create_directories(folder_.Path() / "lang/English");
  std::filesystem::copy(forms, folder_.Path() / "lang/English/TechDBForms.mde");
  std::filesystem::permissions(folder_.Path() / "lang/English/TechDBForms.mde", std::filesystem::perms::owner_read);
  Keep(_T("TechDBForms"), "TechDBForms.mde (32bit)");
  EXPECT_EQ(Json({"list"})["mode"], "forms");
  EXPECT_EQ(Out({"list"}), "forms file  " + folder_.Path().string() + "/lang/English/TechDBForms.mde\ndatabase    " +
                               SystemPathFromProduct(_T("D:\\T\\DB.mdb")) + "\n");
  EXPECT_EQ(Run({"test"}), Refused("there is no database file " + SystemPathFromProduct(_T("D:\\T\\DB.mdb"))));
}

}  // namespace
