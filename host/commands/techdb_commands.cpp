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
#include "host/environment/database_doctor.h"
#include "host/module/main_module.h"
#include "host/module/recorded_message_boxes.h"
#include "host/shell/arguments.h"
#include "host/shell/failure.h"
#include "host/shell/output.h"
#include "host/shell/text_table.h"
#include "host/shell/whole_file.h"
#include "platform/files.h"
#include "platform/safe_file.h"
#include "share/env/app_env.h"
#include "share/utilities/tech_db_config_file.h"

namespace kestrova {
namespace {

using Json = nlohmann::ordered_json;

constexpr char kHelp[] = R"(
Examples:
  kestrova techdb list                     # all databases; * is the active one
  kestrova techdb activate 1
  kestrova techdb test                     # connects: driver, file or server, version, time
  kestrova techdb tables --count
  kestrova techdb query "SELECT * FROM CuttingData WHERE Material = 'C45'" --rows 20 --json
)";

constexpr long kRows = 100;
constexpr long kMostRows = 1'000'000;

struct Options {
  bool json = false;
  bool count = false;
  bool force = false;
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

// The file of an entry as the system names it, or the server's name and database.
std::string NameOf(const QFTechDBConfigData& entry) {
  if (entry.GetDatabaseType() == QF_TECHDB_SQLSERVER) return ToUtf8(entry.GetDisplayName());
  return SystemPathFromProduct(entry.GetFilePath());
}

// Why an entry's file cannot be opened; empty if it is there, and for a server.
std::string FaultOf(const QFTechDBConfigData& entry) {
  if (entry.GetDatabaseType() == QF_TECHDB_SQLSERVER) return {};
  const DWORD attributes = GetFileAttributesW(entry.GetFilePath());
  if (attributes == INVALID_FILE_ATTRIBUTES) return "missing";
  return attributes & FILE_ATTRIBUTE_DIRECTORY ? "missing, a folder has its name" : "";
}

void RequireConfiguration(const CKVEnvApp& env) {
  if (!env.GetConfigDataUseStatus())
    throw Failure("there is no list of databases: the forms file " + SystemPathFromProduct(env.GetKVTechDBFormsPath()) +
                  " names the active one (registry value TechDBForms)");
}

// Refuses a list from which the library left something out.
void RequireWholeList(const CKVEnvApp& env) {
  if (const auto fault = FaultOfTechDatabaseList(env)) throw Failure(fault->text, fault->place);
}

bool HasListFile(const CKVEnvApp& env) { return _waccess(env.GetTechDBConfigFilePath() + kTechDBConfigFile, 0) == 0; }

// A database in forms mode: a file, or server and database.
std::string NameOfFormsDatabase(const CKVEnvApp& env) {
  const CString& target = env.GetKVTechDBPath();
  const CString shown = ShownTarget(target);
  return shown == target ? SystemPathFromProduct(target) : ToUtf8(shown);
}

// ---- list, activate

Json EntryJson(const QFTechDBConfigData& entry, int number, bool active) {
  return {{"number", number},
          {"active", active},
          {"type", TypeName(entry.GetDatabaseType())},
          {"name", NameOf(entry)},
          {"missing", !FaultOf(entry).empty()},
          {"description", ToUtf8(entry.GetDescription())}};
}

void ListForms(const Options& options, const CKVEnvApp& env) {
  const std::string forms = SystemPathFromProduct(env.GetKVTechDBFormsPath());
  if (options.json) {
    PrintJson({{"mode", "forms"}, {"forms", forms}, {"database", NameOfFormsDatabase(env)}});
  } else {
    Print("forms file  {}\ndatabase    {}\n", forms, NameOfFormsDatabase(env));
  }
}

void List(const Options& options) {
  const CKVEnvApp& env = Environment();
  if (!env.GetConfigDataUseStatus()) return ListForms(options, env);
  RequireWholeList(env);
  const QFTechDBConfigInfo& info = *env.GetTechDBConfigInfo();
  if (info.GetCount() == 0 && !HasListFile(env)) {
    const TechDatabaseFault fault = NoTechDatabase(env);
    throw Failure(fault.text + "; " + fault.remedy, fault.place);
  }
  Json entries = Json::array();
  TextTable table({{"", false}, {"", true}, {"type", false}, {"database", false}, {"description", false}});
  for (int i = 0; i < info.GetCount(); ++i) {
    const QFTechDBConfigData& entry = *info.GetTechDBConfigData(i);
    const bool active = &entry == info.GetActiveConfigData();
    const std::string fault = FaultOf(entry);
    entries.push_back(EntryJson(entry, i + 1, active));
    table.Add({active ? "*" : "", std::to_string(i + 1), TypeName(entry.GetDatabaseType()),
               NameOf(entry) + (fault.empty() ? "" : " (" + fault + ")"), ToUtf8(entry.GetDescription())});
  }
  if (options.json) {
    PrintJson({{"mode", "configuration"}, {"file", TechDatabaseList(env)}, {"databases", entries}});
  } else if (entries.empty()) {
    Print("{}\n", NoTechDatabase(env).text);
  } else {
    PrintLines(table.Text());
  }
}

// The number of the active database from 1; 0 for an empty list.
int ActiveNumber(const QFTechDBConfigInfo& list) {
  const QFTechDBConfigData* active = list.GetActiveConfigData();
  int number = 0;
  while (active && list.GetTechDBConfigData(number++) != active) {
  }
  return number;
}

void Store(CKVEnvApp& env, QFTechDBConfigInfo& list, int number) {
  const std::string file = TechDatabaseList(env);
  if (!HasListFile(env)) throw Failure("cannot store the choice: there is no file " + file);
  for (int i = 0; i < list.GetCount(); ++i) list.GetTechDBConfigData(i)->SetActiveFlag(i == number - 1);
  env.UpdateDBConfigData(&list);
  SetLastError(ERROR_SUCCESS);
  if (env.WriteDBConfigData()) return;
  const LONG status = LONG(GetLastError());
  if (status == kWrittenButNotFlushed) throw Failure(WrittenButNotFlushed(file), {.file = file});
  throw Failure(fmt::format("cannot write {}: {}", file,
                            status != ERROR_SUCCESS ? ErrorText(DWORD(status))
                                                    : "it must have one node, such as a comment, before the databases "
                                                      "and only whole databases after it"),
                {.file = file});
}

void Activate(const Options& options) {
  CKVEnvApp& env = Environment();
  RequireConfiguration(env);
  RequireWholeList(env);
  QFTechDBConfigInfo list = *env.GetTechDBConfigInfo();
  const QFTechDBConfigData* chosen = list.GetTechDBConfigData(options.number - 1);
  if (!chosen) {
    throw NotFound(
        fmt::format("there is no database {}; {} lists {}", options.number, TechDatabaseList(env), list.GetCount()));
  }
  if (const std::string fault = FaultOf(*chosen); !fault.empty() && !options.force) {
    throw Failure(fmt::format("the file of database {} is {}: {}; --force activates it all the same", options.number,
                              fault, NameOf(*chosen)));
  }
  const int before = ActiveNumber(list);
  if (before != options.number || !chosen->GetActiveFlag()) Store(env, list, options.number);
  if (options.json) {
    PrintJson({{"from", before}, {"to", options.number}, {"database", EntryJson(*chosen, options.number, true)}});
  } else {
    Print("{} -> {}  {}\n", before, options.number, NameOf(*chosen));
  }
}

// ---- contents

// A connection to the active database.
struct Connection {
  Connection() : env(Environment()), database(env.Is64BitDatabaseInUse(), env.IsSQLiteDatabaseInUse()) {
    const QFTechDBConfigData* active = env.GetActiveTechDBConfigData();
    if (env.GetConfigDataUseStatus() && !active) {
      const TechDatabaseFault fault = NoTechDatabase(env);
      throw Failure(fault.text + "; " + fault.remedy, fault.place);
    }
    if (!active && env.GetKVTechDBPath().IsEmpty())
      throw Failure("the forms file " + SystemPathFromProduct(env.GetKVTechDBFormsPath()) + " names no database");
    const auto start = std::chrono::steady_clock::now();
    database.Open(active ? active->GetConnectionString() : env.GetKVTechDBPath(), /*readOnly=*/true);
    milliseconds = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    name = active ? NameOf(*active) : NameOfFormsDatabase(env);
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
    PrintJson({{"database", connection.name},
               {"driver", driver},
               {"driverFile", file},
               {"version", version},
               {"milliseconds", connection.milliseconds}});
    return;
  }
  Print("database  {}\ndriver    {}{}\nversion   {}\nconnected in {:.1f} ms\n", connection.name, driver,
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
  options.json ? PrintJson({{"tables", tables}}) : PrintLines(text.Text());
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
  RequireUtf8("SQL", options.sql);
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
    PrintJson({{"columns", names}, {"rows", rows}, {"more", records.HasMore()}});
    return;
  }
  PrintLines(text.Text());
  if (records.HasMore()) Print("the first {} rows; --rows shows more\n", options.rows);
}

}  // namespace

void AddTechDatabaseCommands(CLI::App& group) {
  static Options options;
  group.require_subcommand(1);
  group.footer(kHelp);
  const auto add = [&group](const char* name, const char* text, void (*run)(const Options&)) {
    CLI::App* command = group.add_subcommand(name, text);
    command->add_flag("--json", options.json, "As JSON");
    command->footer(kHelp);
    command->callback([run] { run(options); });
    return command;
  };
  add("list", "List the databases; * marks the active one", List);
  CLI::App* activate =
      add("activate", "Activate a database by its number in the list; prints the numbers before and after", Activate);
  activate->footer("Example, which changes nothing while database 1 is the active one:\n  kestrova techdb activate 1");
  activate->add_option("number", options.number, "From 1")->required();
  activate->add_flag("--force", options.force, "Also if the file of the database is missing");
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
