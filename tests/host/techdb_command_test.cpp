// kestrova techdb: list, choice and contents, in a data folder of the test.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "framework/text.h"
#include "platform/paths.h"
#include "tests/host/run_command.h"

namespace {

using kvtest::RunCommand;
using kvtest::RunResult;
using testing::ContainsRegex;
using testing::HasSubstr;

constexpr char kVersionKey[] = "HKCU\\Software\\Zemlor\\Kestrova\\Kestrova 2024x64";

class TechDBCommand : public testing::Test {
 protected:
  void SetUp() override {
    RunCommand({"reg", "delete", "HKCU\\Software", "/f"});
    Keep("KVDataPath", Product());
    std::filesystem::create_directory(folder_.Path() / "TechDB");
    std::filesystem::copy(KV_BIN_DIR "/../lib/TechDB/TechDB.kvdb", folder_.Path() / "TechDB");
    Configure(
        "<setting databaseType='sqlite' Default='True'><filePath>TechDB.kvdb</filePath><description>ours</description>"
        "</setting><setting databaseType='ms-access'><filePath>old.mdb</filePath></setting><setting databaseType='sql'>"
        "<serverID>127.0.0.1,1</serverID><databaseName>tech</databaseName><userID>eve</userID>"
        "<password>unavailable</password></setting>");
  }
  static void Keep(const std::string& name, const std::string& text) {
    ASSERT_EQ(RunCommand({"reg", "add", kVersionKey, "/v", name, "/t", "REG_SZ", "/d", text, "/f"}).exit_code, 0);
  }
  void Configure(const std::string& settings) const {
    folder_.Write("TechDB/database.config",
                  "<c><applicationSettings><!-- -->" + settings + "</applicationSettings></c>");
  }
  std::string Product() const {
    return ToUtf8(std::u16string_view(ProductPathFromSystem(folder_.Path().string()))) + "\\";
  }
  static RunResult TechDB(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "techdb");
    return RunCommand(arguments);
  }
  // The one line on stderr of a refused command.
  static std::string Refusal(const std::vector<std::string>& arguments) {
    const RunResult result = TechDB(arguments);
    EXPECT_EQ(result.exit_code, 1) << result;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result;
    return result.err;
  }

  const kvtest::ScratchFolder folder_;
};

TEST_F(TechDBCommand, ListsAndActivates) {
  const std::string tech = Product() + "TechDB\\";
  EXPECT_EQ(TechDB({"list"}).out, "      type       database" + std::string(tech.size() + 9, ' ') + "  description\n" +
                                      "*  1  sqlite     " + tech + "TechDB.kvdb" + std::string(6, ' ') + "  ours\n" +
                                      "   2  ms-access  " + tech + "old.mdb (missing)\n" +
                                      "   3  sql        SERVER=127.0.0.1,1;DATABASE=tech\n");
  EXPECT_EQ(TechDB({"activate", "2"}), (RunResult{0, tech + "old.mdb\n", ""}));
  EXPECT_THAT(kvtest::ReadFile(folder_.Path() / "TechDB/database.config"),
              HasSubstr("'ms-access' Default=\"True\"><filePath>"));
  const auto list = nlohmann::json::parse(TechDB({"list", "--json"}).out);
  EXPECT_EQ(list["mode"], "configuration");
  EXPECT_EQ(list["databases"].size(), 3u);
  EXPECT_EQ(list["databases"][1]["active"], true);
  EXPECT_EQ(list["databases"][1]["missing"], true);
  EXPECT_EQ(list["databases"][2]["name"], "SERVER=127.0.0.1,1;DATABASE=tech");
  EXPECT_EQ(Refusal({"activate", "4"}), "kestrova: there is no database 4; " + tech + "database.config lists 3\n");
  EXPECT_EQ(TechDB({"activate", "x"}).exit_code, 2);
}

TEST_F(TechDBCommand, ConnectsAndShowsWhatIsInIt) {
  EXPECT_THAT(TechDB({"test"}).out,
              ContainsRegex("^database  [^\n]*TechDB.kvdb\ndriver    Kestrova SQLite3 ODBC Driver [^\n]*\n"
                            "version   SQLite 3[0-9.]*\nconnected in [0-9.]* ms\n$"));
  const auto test = nlohmann::json::parse(TechDB({"test", "--json"}).out);
  EXPECT_EQ(test["driver"], "Kestrova SQLite3 ODBC Driver");
  EXPECT_THAT(TechDB({"tables", "--count"}).out, HasSubstr("Materials       table       12\n"));
  EXPECT_EQ(
      TechDB({"query", "SELECT ToolID, Name, DiameterMm FROM Tools WHERE ToolID IN (6, 9, 10)", "--rows", "2"}).out,
      "ToolID  Name         DiameterMm\n"
      "     6  Drill D6.8          6.8\n"
      "     9  CNMG 120408\n"
      "the first 2 rows; --rows shows more\n");
  EXPECT_EQ(nlohmann::json::parse(TechDB({"query", "SELECT 9 AS a, 'b', NULL", "--json"}).out),
            nlohmann::json::parse(R"({"columns":["a","'b'","NULL"],"rows":[[9,"b",null]],"more":false})"));
  EXPECT_EQ(TechDB({"query", "SELECT 'x\x1B\u009By' AS \"a\x1B[b\""}).out, "a [b\nx  y\n")
      << "nothing for the terminal";
}

TEST_F(TechDBCommand, AQueryChangesNothing) {
  const std::filesystem::path file = folder_.Path() / "TechDB/TechDB.kvdb";
  const std::string before = kvtest::ReadFile(file);
  const std::string alone =
      "kestrova: the database is open for reading only: a query begins with SELECT, WITH, VALUES or EXPLAIN, not with "
      "\"";
  for (const std::string word : {"Delete FROM Tools", "PRAGMA query_only = 0", "ATTACH 'other.kvdb' AS other"})
    EXPECT_EQ(Refusal({"query", "/* SELECT */ -- SELECT\n(" + word}), alone + word.substr(0, word.find(' ')) + "\"\n");
  EXPECT_EQ(Refusal({"query", ""}), alone + "\"\n");
  EXPECT_EQ(Refusal({"query", "WITH one AS (SELECT 1) DELETE FROM Tools"}),
            "kestrova: cannot run the statement: attempt to write a readonly database (8) (HY000)\n");
  EXPECT_EQ(Refusal({"query", "SELECT 1; DELETE FROM Tools"}),
            "kestrova: cannot run the statement: only one SQL statement allowed (HY000)\n");
  EXPECT_EQ(TechDB({"query", "VALUES (1), (2)"}).exit_code, 0);
  EXPECT_EQ(kvtest::ReadFile(file), before);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_.Path() / "TechDB"), {}), 2) << "no new file";
}

TEST_F(TechDBCommand, FailuresAreOneLine) {
  EXPECT_EQ(Refusal({"query", "SELECT * FROM Absent"}),
            "kestrova: cannot run the statement: no such table: Absent (1) (HY000)\n");
  TechDB({"activate", "2"});
  EXPECT_EQ(Refusal({"test"}), "kestrova: there is no database file " + Product() + "TechDB\\old.mdb\n");
  folder_.Write("TechDB/old.mdb", std::string(5000, 'x'));
  EXPECT_EQ(Refusal({"test"}),
            "kestrova: " + Product() + "TechDB\\old.mdb is not an Access database or cannot be read\n");
  TechDB({"activate", "3"});
  const std::string refusal = Refusal({"test"});
  EXPECT_THAT(refusal, HasSubstr("kestrova: cannot open database tech on server 127.0.0.1,1: "));
  EXPECT_THAT(refusal, testing::Not(HasSubstr("unavailable"))) << "the password";
  Configure("");
  EXPECT_THAT(Refusal({"tables"}), HasSubstr("there is no technology database: "));
  EXPECT_THAT(Refusal({"activate", "1"}), HasSubstr("there is no database 1; "));
}

TEST_F(TechDBCommand, FormsFileThatIsMissingIsOneLine) {
  Keep("TechDBForms", "TechDBForms.mde (32bit)");
  EXPECT_EQ(Refusal({"list"}), "kestrova: TechDBForms.mde could not be found at " + Product() + "lang\\English\\\n");
}

// A file written by Access, read by the driver of the installation.
TEST_F(TechDBCommand, AccessFilesAreRead) {
  const std::filesystem::path forms = KV_TEST_FILES "/fixtures/TechDBForms.mdb";
  std::filesystem::copy(forms, folder_.Path() / "TechDB/old.mdb");
  TechDB({"activate", "2"});
  EXPECT_THAT(TechDB({"test"}).out,
              HasSubstr("\ndriver    Microsoft Access Driver (*.mdb, *.accdb)\nversion   MDBTOOLS "));
  EXPECT_EQ(TechDB({"tables", "--count"}).out,
            "name                  kind   records\nTechDBFormsPathTable  table        1\n");
  EXPECT_EQ(TechDB({"query", "SELECT [path], UserId FROM TechDBFormsPathTable; "}),
            (RunResult{0, "path         UserId\nD:\\T\\DB.mdb       1\n", ""}));
  std::filesystem::create_directories(folder_.Path() / "lang/English");
  std::filesystem::copy(forms, folder_.Path() / "lang/English/TechDBForms.mde");
  std::filesystem::permissions(folder_.Path() / "lang/English/TechDBForms.mde", std::filesystem::perms::owner_read);
  Keep("TechDBForms", "TechDBForms.mde (32bit)");
  EXPECT_EQ(
      TechDB({"list"}),
      (RunResult{0, "forms file  " + Product() + "lang\\English\\TechDBForms.mde\n" + "database    D:\\T\\DB.mdb\n",
                 ""}));
  EXPECT_EQ(Refusal({"test"}), "kestrova: there is no database file D:\\T\\DB.mdb\n");
}

}  // namespace
