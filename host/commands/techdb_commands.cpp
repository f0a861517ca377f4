// kestrova techdb: lists and activates technology databases and shows the contents of the active one.
#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "companions/database/connection_strings.h"
#include "companions/database/recordset.h"
#include "host/commands/commands.h"
#include "host/module/main_module.h"
#include "host/module/recorded_message_boxes.h"
#include "host/shell/failure.h"
#include "host/shell/text_table.h"
#include "platform/files.h"
#include "share/env/app_env.h"
#include "share/utilities/tech_db_config_file.h"

namespace kestrova {
namespace {

using Json = nlohmann::ordered_json;

constexpr char kHelp[] = R"(
Examples:
  kestrova techdb list                     # all databases; * is the active one
  kestrova techdb activate 2
  kestrova techdb test                     # connects: driver, file or server, version, time
  kestrova techdb tables --count
  kestrova techdb query "SELECT * FROM CuttingData WHERE Material = 'C45'" --rows 20 --json
)";

constexpr long kRows = 100;
constexpr long kMostRows = 1'000'000;

struct Options {
  bool json = false;
  bool count = false;
  int number = 0;
  long rows = kRows;
  std::string sql;
};

// Starts the environment. Its message is the command's failure, unless it found a database all the same: it also
// reports that it made a forms file writable.
CKVEnvApp& Environment() {
  const RecordedMessageBoxes boxes;
  StartMainModule();
  if (!boxes.Last().empty() && AppEnv()->GetKVTechDBPath().IsEmpty()) throw Failure(boxes.Last());
  return *AppEnv();
}

const char* TypeName(int type) {
  constexpr const char* kNames[] = {"sqlite", "ms-access", "sql"};
  return type >= 0 && type < int(std::size(kNames)) ? kNames[type] : "unknown";
}

bool IsMissing(const QFTechDBConfigData& entry) {
  return entry.GetDatabaseType() != QF_TECHDB_SQLSERVER && _waccess(entry.GetFilePath(), 0) != 0;
}

std::string ConfigFile(const CKVEnvApp& env) { return ToUtf8(env.GetTechDBConfigFilePath() + kTechDBConfigFile); }

void RequireConfiguration(const CKVEnvApp& env) {
  if (!env.GetConfigDataUseStatus())
    throw Failure("there is no list of databases: the forms file " + ToUtf8(env.GetKVTechDBFormsPath()) +
                  " names the active one (registry value TechDBForms)");
}

// ---- list, activate

Json EntryJson(const QFTechDBConfigData& entry, int number, bool active) {
  return {{"number", number},
          {"active", active},
          {"type", TypeName(entry.GetDatabaseType())},
          {"name", ToUtf8(entry.GetDisplayName())},
          {"missing", IsMissing(entry)},
          {"description", ToUtf8(entry.GetDescription())}};
}

void List(const Options& options) {
  const CKVEnvApp& env = Environment();
  if (!env.GetConfigDataUseStatus()) {
    const std::string forms = ToUtf8(env.GetKVTechDBFormsPath());
    if (options.json) {
      fmt::print(
          "{}\n",
          Json{{"mode", "forms"}, {"forms", forms}, {"database", ToUtf8(ShownTarget(env.GetKVTechDBPath()))}}.dump(2));
    } else {
      fmt::print("forms file  {}\ndatabase    {}\n", forms, ToUtf8(ShownTarget(env.GetKVTechDBPath())));
    }
    return;
  }
  const QFTechDBConfigInfo& info = *env.GetTechDBConfigInfo();
  Json entries = Json::array();
  TextTable table({{"", false}, {"", true}, {"type", false}, {"database", false}, {"description", false}});
  for (int i = 0; i < info.GetCount(); ++i) {
    const QFTechDBConfigData& entry = *info.GetTechDBConfigData(i);
    const bool active = &entry == info.GetActiveConfigData();
    entries.push_back(EntryJson(entry, i + 1, active));
    table.Add({active ? "*" : "", std::to_string(i + 1), TypeName(entry.GetDatabaseType()),
               ToUtf8(entry.GetDisplayName()) + (IsMissing(entry) ? " (missing)" : ""),
               ToUtf8(entry.GetDescription())});
  }
  if (options.json) {
    fmt::print("{}\n", Json{{"mode", "configuration"}, {"file", ConfigFile(env)}, {"databases", entries}}.dump(2));
  } else {
    fmt::print("{}", table.Text());
  }
}

void Activate(const Options& options) {
  CKVEnvApp& env = Environment();
  RequireConfiguration(env);
  const std::string file = ConfigFile(env);
  if (_waccess(env.GetTechDBConfigFilePath() + kTechDBConfigFile, 0) != 0)
    throw Failure("cannot store the choice: there is no file " + file);
  QFTechDBConfigInfo list = *env.GetTechDBConfigInfo();
  if (!list.GetTechDBConfigData(options.number - 1))
    throw NotFound(fmt::format("there is no database {}; {} lists {}", options.number, file, list.GetCount()));
  for (int i = 0; i < list.GetCount(); ++i) list.GetTechDBConfigData(i)->SetActiveFlag(i == options.number - 1);
  env.UpdateDBConfigData(&list);
  if (!env.WriteDBConfigData())
    throw Failure("cannot write " + file +
                  ": it must be writable, with one node, such as a comment, before the databases and only whole "
                  "databases after it");
  fmt::print("{}\n", ToUtf8(list.GetActiveConfigData()->GetDisplayName()));
}

// ---- contents

// A connection to the active database.
struct Connection {
  Connection() : env(Environment()), database(env.Is64BitDatabaseInUse(), env.IsSQLiteDatabaseInUse()) {
    const QFTechDBConfigData* active = env.GetActiveTechDBConfigData();
    if (env.GetConfigDataUseStatus() && !active)
      throw Failure("there is no technology database: " + ConfigFile(env) + " names none and there is no file " +
                    ToUtf8(env.GetDefaultSQLiteDBPath()));
    if (!active && env.GetKVTechDBPath().IsEmpty())
      throw Failure("the forms file " + ToUtf8(env.GetKVTechDBFormsPath()) + " names no database");
    const auto start = std::chrono::steady_clock::now();
    database.Open(active ? active->GetConnectionString() : env.GetKVTechDBPath(), /*readOnly=*/true);
    milliseconds = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    name = active ? ToUtf8(active->GetDisplayName()) : ToUtf8(ShownTarget(env.GetKVTechDBPath()));
  }

  CKVEnvApp& env;
  CDaoDatabase database;
  double milliseconds = 0;
  std::string name;
};

void Test(const Options& options) {
  const Connection connection;
  const std::string driver = ToUtf8(connection.database.GetDriverName());
  const std::string file = ToUtf8(connection.database.GetDriverFile());
  const std::string version = ToUtf8(connection.database.GetVersion());
  if (options.json) {
    fmt::print("{}\n", Json{{"database", connection.name},
                            {"driver", driver},
                            {"driver file", file},
                            {"version", version},
                            {"milliseconds", connection.milliseconds}}
                           .dump(2));
    return;
  }
  fmt::print("database  {}\ndriver    {}{}\nversion   {}\nconnected in {:.1f} ms\n", connection.name, driver,
             file.empty() ? file : " (" + file + ")", version, connection.milliseconds);
}

void Tables(const Options& options) {
  Connection connection;
  Json tables = Json::array();
  TextTable text({{"name", false}, {"kind", false}, {options.count ? "records" : "", true}});
  for (int i = 0; i < connection.database.GetTableDefCount(); ++i) {
    CDaoTableDefInfo info;
    connection.database.GetTableDefInfo(i, info, options.count);
    const std::string name =
        ToUtf8(info.m_strSchema.IsEmpty() ? info.m_strName : info.m_strSchema + _T(".") + info.m_strName);
    const char* kind = info.m_bUpdatable ? "table" : "view";
    tables.push_back({{"name", name}, {"kind", kind}});
    if (options.count) tables.back()["records"] = info.m_lRecordCount;
    text.Add({name, kind, options.count ? std::to_string(info.m_lRecordCount) : ""});
  }
  fmt::print("{}", options.json ? tables.dump(2) + "\n" : text.Text());
}

// A numeric value as a number, or as the driver's text if JSON has no such number.
Json ValueJson(const std::optional<CString>& value, bool numeric) {
  if (!value) return nullptr;
  const std::string text = ToUtf8(*value);
  if (!numeric) return text;
  Json number = Json::parse(text, nullptr, /*allow_exceptions=*/false);
  return number.is_number() ? number : Json(text);
}

void Query(const Options& options) {
  Connection connection;
  CDaoRecordset records(&connection.database);
  records.SetMostRecords(LONG(options.rows));
  records.Open(FromUtf8(options.sql));
  std::vector<TextTable::Column> columns;
  Json names = Json::array(), rows = Json::array();
  for (int i = 0; i < records.GetFieldCount(); ++i) {
    columns.push_back({ToUtf8(records.GetFieldName(i)), records.IsFieldNumeric(i)});
    names.push_back(columns.back().title);
  }
  TextTable text(columns);
  for (; !records.IsEOF(); records.MoveNext()) {
    std::vector<std::string> cells;
    Json row = Json::array();
    for (int i = 0; i < records.GetFieldCount(); ++i) {
      if (options.json) {
        row.push_back(ValueJson(records.GetFieldValue(i), records.IsFieldNumeric(i)));
      } else {
        cells.push_back(ToUtf8(records.GetFieldValue(i).value_or(CString())));
      }
    }
    if (options.json) {
      rows.push_back(std::move(row));
    } else {
      text.Add(std::move(cells));
    }
  }
  if (options.json) {
    fmt::print("{}\n", Json{{"columns", names}, {"rows", rows}, {"more", records.HasMore()}}.dump(2));
    return;
  }
  fmt::print("{}", text.Text());
  if (records.HasMore()) fmt::print("the first {} rows; --rows shows more\n", options.rows);
}

}  // namespace

void AddTechDatabaseCommands(CLI::App& group) {
  static Options options;
  group.require_subcommand(1);
  group.footer(kHelp);
  const auto add = [&group](const char* name, const char* text, void (*run)(const Options&), bool json = true) {
    CLI::App* command = group.add_subcommand(name, text);
    if (json) command->add_flag("--json", options.json, "As JSON");
    command->callback([run] { run(options); });
    return command;
  };
  add("list", "List the databases; * marks the active one", List);
  add("activate", "Activate a database by its number in the list", Activate, /*json=*/false)
      ->add_option("number", options.number, "From 1")
      ->required();
  add("test", "Connect to the active database; show driver, file or server, version and time", Test);
  add("tables", "List the tables and views of the active database", Tables)
      ->add_flag("--count", options.count, "With the number of records, by a query per table");
  CLI::App* query = add("query", "Run a read-only query in the active database and print the rows", Query);
  query->add_option("sql", options.sql, "One query, such as \"SELECT * FROM Tools\"")->required();
  query->add_option("--rows", options.rows, "The largest number of rows")
      ->check(CLI::Range(1L, kMostRows))
      ->capture_default_str();
}

}  // namespace kestrova
