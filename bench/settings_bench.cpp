// Settings: reading a value by name compared with a hash map and with QSettings, restoring and saving a tree of 700
// values, building the application's tree, restoring and saving its values compared with SQLite, and the search for the
// colour of a feed.
#include <sqlite3.h>

#include <QSettings>
#include <algorithm>
#include <filesystem>
#include <unordered_map>
#include <variant>

#include "bench/ratio.h"
#include "platform/process.h"
#include "share/settings/application_settings.h"
#include "share/settings/feed_colors.h"

namespace {

constexpr int kKeySize = 50;  // values in each sub-key

CString NameOf(int i) {
  CString name;
  name.Format(_T("SettingsValueNumber%d"), i);
  return name;
}

// A tree of that many integers in sub-keys; the names are in numerical order.
void Fill(QFSettingsKey& root, int count) {
  for (int i = 0; i < count;) {
    CString name;
    name.Format(_T("Key%d"), i);
    auto* key = new QFSettingsKey(name, _T("Software\\SettingsBench\\") + name);
    for (const int end = std::min(count, i + kKeySize); i < end; ++i) key->AddValue(NameOf(i), i);
    root.AddKey(key);
  }
}

void BenchGetValue(kvbench::Table& table, int count) {
  QFSettingsKey root(_T("Root"), _T("Software\\SettingsBench"));
  Fill(root, count);
  std::vector<CString> names;
  std::vector<std::u16string> texts;
  std::vector<QString> qtNames;
  std::unordered_map<std::u16string, int> map;
  QSettings settings("bench.ini", QSettings::IniFormat);
  for (int i = 0; i < count; ++i) {
    names.push_back(NameOf(i));
    texts.emplace_back(names.back().View());
    qtNames.push_back(QString::fromStdU16String(texts.back()));
    map.emplace(texts.back(), i);
    settings.setValue(qtNames.back(), i);
  }
  const auto step = [count](int& at) { return at = int((unsigned(at) * 7919u + 1u) % unsigned(count)); };
  int a = 0, b = 0, c = 0, value = 0;
  const auto ours = [&] {
    root.GetValue(names[std::size_t(step(a))], value);
    kvbench::Keep(value);
  };
  for (int i = 0; i < 2; ++i) ours();  // the second search builds the index, outside the measured time
  table.Pair({.name = "GetValue", .size = std::size_t(count), .peer = "std::unordered_map", .goal = 3.0}, ours,
             [&] { kvbench::Keep(map.find(texts[std::size_t(step(b))])->second); });
  table.Pair({.name = "GetValue", .size = std::size_t(count), .peer = "QSettings::value", .goal = 1.0}, ours,
             [&] { kvbench::Keep(settings.value(qtNames[std::size_t(step(c))]).toInt()); });
}

void BenchRegistry(kvbench::Table& table, const std::string& folder) {
  constexpr int kCount = 700;
  QFSettingsKey root(_T("Root"), _T("Software\\SettingsBench"));
  Fill(root, kCount);
  const QString file = QString::fromStdString(folder + "/peer.ini");
  const auto save = [&] {
    QSettings settings(file, QSettings::IniFormat);
    for (int i = 0; i < kCount; ++i) settings.setValue(QString("Key%1/Value%2").arg(i / kKeySize).arg(i), i);
    settings.sync();
  };
  const auto restore = [&] {
    QSettings settings(file, QSettings::IniFormat);
    for (int i = 0; i < kCount; ++i)
      kvbench::Keep(settings.value(QString("Key%1/Value%2").arg(i / kKeySize).arg(i)).toInt());
  };
  table.Pair(
      {.name = "save a tree to the registry", .size = kCount, .peer = "QSettings, INI file"},
      [&] { kvbench::Keep(root.SaveValuesToRegistry()); }, save);
  table.Pair(
      {.name = "restore a tree from the registry", .size = kCount, .peer = "QSettings, INI file"},
      [&] { kvbench::Keep(root.RestoreValuesFromRegistry()); }, restore);
}

// ---- the application's tree

// The values of the hive in a file with the same tables and durability, accessed only by prepared statements.
class PlainSqlite {
 public:
  explicit PlainSqlite(const std::filesystem::path& hive) {
    const std::string copy = (hive.parent_path() / "peer.db").string();
    sqlite3_open(hive.c_str(), &connection_);
    Run(("VACUUM INTO '" + copy + "'").c_str());
    sqlite3_close(connection_);
    sqlite3_open(copy.c_str(), &connection_);
    Run("PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL");
    sqlite3_stmt* all = Prepared("SELECT key, folded, data FROM value ORDER BY key");
    while (sqlite3_step(all) == SQLITE_ROW) {
      const auto* data = static_cast<const char*>(sqlite3_column_blob(all, 2));
      rows_.push_back({sqlite3_column_int64(all, 0), reinterpret_cast<const char*>(sqlite3_column_text(all, 1)),
                       std::string(data ? data : "", std::size_t(sqlite3_column_bytes(all, 2)))});
    }
    sqlite3_finalize(all);
    read_ = Prepared("SELECT type, data FROM value WHERE key = ?1 AND folded = ?2");
    write_ = Prepared("UPDATE value SET data = ?3, written = ?4 WHERE key = ?1 AND folded = ?2");
  }
  PlainSqlite(const PlainSqlite&) = delete;
  PlainSqlite& operator=(const PlainSqlite&) = delete;
  ~PlainSqlite() {
    sqlite3_finalize(read_);
    sqlite3_finalize(write_);
    sqlite3_close(connection_);
  }

  std::size_t Count() const { return rows_.size(); }
  // Changes the file as another process would, so that the next reader finds a changed file.
  void Touch() { Run("UPDATE key SET written = written + 1 WHERE id = 1"); }
  void Begin() { Run("BEGIN"); }
  void Commit() { Run("COMMIT"); }
  void ReadAll() {
    for (const Row& row : rows_) {
      Bind(read_, row);
      sqlite3_step(read_);
      std::string data(static_cast<const char*>(sqlite3_column_blob(read_, 1)),
                       std::size_t(sqlite3_column_bytes(read_, 1)));
      kvbench::Keep(data.data());
      sqlite3_reset(read_);
    }
  }
  // Changes every value. With `per_key`, each key is one transaction.
  void WriteAll(bool per_key) {
    ++round_;
    sqlite3_int64 key = 0;
    for (Row& row : rows_) {
      if (per_key && row.key != key) {
        if (key) Commit();
        Begin();
        key = row.key;
      }
      Write(row);
    }
    if (per_key) Commit();
  }
  void WriteOne() {
    ++round_;
    Write(rows_.front());
  }

 private:
  struct Row {
    sqlite3_int64 key;
    std::string folded;
    std::string data;
  };

  void Write(Row& row) {
    if (!row.data.empty()) row.data[0] = char(round_);
    Bind(write_, row);
    sqlite3_bind_blob(write_, 3, row.data.data(), int(row.data.size()), SQLITE_STATIC);
    sqlite3_bind_int64(write_, 4, round_);
    sqlite3_step(write_);
    sqlite3_reset(write_);
  }
  void Run(const char* sql) { sqlite3_exec(connection_, sql, nullptr, nullptr, nullptr); }
  sqlite3_stmt* Prepared(const char* sql) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(connection_, sql, -1, &statement, nullptr);
    return statement;
  }
  static void Bind(sqlite3_stmt* statement, const Row& row) {
    sqlite3_bind_int64(statement, 1, row.key);
    sqlite3_bind_text(statement, 2, row.folded.data(), int(row.folded.size()), SQLITE_STATIC);
  }

  sqlite3* connection_ = nullptr;
  sqlite3_stmt* read_ = nullptr;
  sqlite3_stmt* write_ = nullptr;
  std::vector<Row> rows_;
  int round_ = 0;
};

// The values of a tree, each with a function that sets its datum for a round.
class Changes {
 public:
  explicit Changes(const QFSettingsKey& tree) { Collect(tree); }
  void Make(int round) const {
    for (const auto& [value, change] : all_) change(*value, round);
  }

 private:
  using Change = void (*)(QFSettingsValue& value, int round);

  template <class Value, class Datum>
  bool Add(QFSettingsValue& value, Datum) {
    if (!dynamic_cast<Value*>(&value)) return false;
    all_.emplace_back(&value,
                      [](QFSettingsValue& each, int round) { static_cast<Value&>(each).SetValue(Datum()(round)); });
    return true;
  }
  void Collect(const QFSettingsKey& key) {
    for (POSITION at = key.GetList().GetHeadPosition(); at;) {
      CObject* item = key.GetList().GetNext(at);
      if (const auto* below = DYNAMIC_DOWNCAST(QFSettingsKey, item)) Collect(*below);
      auto* value = DYNAMIC_DOWNCAST(QFSettingsValue, item);
      if (!value) continue;
      const auto text = [](int round) { return CString(round % 2 ? _T("C:\\A") : _T("C:\\B")); };
      Add<QFIntValue>(*value, [](int round) { return round; }) ||
          Add<QFDoubleValue>(*value, [](int round) { return double(round); }) ||
          Add<QFColorValue>(*value, [](int round) { return static_cast<unsigned long>(round); }) ||
          Add<QFStringValue>(*value, text) ||
          Add<QFTimeValue>(*value, [](int round) { return CTime(LONGLONG(round)); }) ||
          Add<QFPointValue>(*value, [](int round) { return CPoint(round, round); }) ||
          Add<QFRectValue>(*value, [](int round) { return CRect(round, round, round, round); });
    }
  }

  std::vector<std::pair<QFSettingsValue*, Change>> all_;
};

void BenchApplication(kvbench::Table& table, const std::filesystem::path& folder) {
  constexpr const char* kPeer = "SQLite C interface, a transaction a value";
  QFAppSettings settings;
  settings.RestoreValuesFromRegistry();
  settings.SaveValuesToRegistry();
  PlainSqlite peer(folder / "user.hive");
  const std::size_t count = peer.Count();
  using Datum = std::variant<int, double, std::u16string>;
  table.Pair(
      {.name = "build the application's tree", .size = count, .peer = "std::unordered_map of as many integers"},
      [] { return std::make_unique<QFAppSettings>(); },
      [count] {
        auto map = std::make_unique<std::unordered_map<std::u16string, Datum>>();
        for (std::size_t i = 0; i < count; ++i) map->emplace(u"SettingsValueNumber" + std::u16string(1, TCHAR(i)), 1);
        return map;
      });
  const auto restore = [&] { kvbench::Keep(settings.RestoreValuesFromRegistry()); };
  table.Pair({.name = "restore the application's tree", .size = count, .peer = kPeer, .goal = 1.5}, restore,
             [&] { peer.ReadAll(); });
  sqlite3* another = nullptr;  // acts as another process
  sqlite3_open((folder / "user.hive").c_str(), &another);
  sqlite3_exec(another, "PRAGMA synchronous = NORMAL", nullptr, nullptr, nullptr);
  const auto touch = [another] {
    sqlite3_exec(another, "UPDATE key SET written = written + 1 WHERE id = 1", nullptr, nullptr, nullptr);
  };
  const auto restore_anew = [&] {
    touch();
    restore();
  };
  table.Pair({.name = "restore it from a changed hive", .size = count, .peer = kPeer, .goal = 1.5}, restore_anew, [&] {
    peer.Touch();
    peer.ReadAll();
  });
  table.Pair({.name = "restore it from a changed hive", .size = count, .peer = "SQLite C interface, one transaction"},
             restore_anew, [&] {
               peer.Touch();
               peer.Begin();
               peer.ReadAll();
               peer.Commit();
             });
  int round = 0;
  const Changes changes(settings);
  const auto save = [&] {
    changes.Make(++round);
    kvbench::Keep(settings.SaveValuesToRegistry());
  };
  table.Pair({.name = "save it, all changed", .size = count, .peer = kPeer, .goal = 2.0}, save,
             [&] { peer.WriteAll(/*per_key=*/false); });
  table.Pair(
      {.name = "save it, all changed", .size = count, .peer = "SQLite C interface, a transaction a key", .goal = 2.0},
      save, [&] { peer.WriteAll(/*per_key=*/true); });
  table.Pair(
      {.name = "save it, all changed", .size = count, .peer = "SQLite C interface, one transaction", .goal = 2.0}, save,
      [&] {
        peer.Begin();
        peer.WriteAll(/*per_key=*/false);
        peer.Commit();
      });
  const auto save_one = [&] {
    settings.SetValue(_T("LineWidth"), ++round);
    kvbench::Keep(settings.SaveValuesToRegistry());
  };
  table.Pair({.name = "save it, one changed", .size = count, .peer = "SQLite C interface, that one alone", .goal = 6.0},
             save_one, [&] { peer.WriteOne(); });
  table.Pair(
      {.name = "save it, one changed", .size = count, .peer = "SQLite C interface, all read and that one written"},
      save_one, [&] {
        peer.Begin();
        peer.ReadAll();
        peer.Commit();
        peer.WriteOne();
      });
  sqlite3_close(another);
}

// ---- feed colours

void BenchFeedColors(kvbench::Table& table, int rows) {
  QFFeedColorsSettings colors;
  std::vector<std::pair<double, unsigned long>> sorted;
  for (int i = rows; i-- > 0;) {
    colors.AddValue(i * 2.5, static_cast<unsigned long>(i));
    sorted.insert(sorted.begin(), {i * 2.5, i});
  }
  const auto step = [rows](unsigned& at) { return double((at = at * 7919u + 1u) % unsigned(rows * 25)) / 10; };
  unsigned a = 0, b = 0, c = 0;
  const auto ours = [&] { kvbench::Keep(colors.GetColorForFeed(step(a))); };
  table.Pair({.name = "GetColorForFeed", .size = std::size_t(rows), .peer = "std::upper_bound"}, ours, [&] {
    const double feed = step(b);
    const auto found = std::upper_bound(sorted.begin(), sorted.end(), feed,
                                        [](double value, const auto& row) { return value < row.first; });
    kvbench::Keep(found == sorted.end() ? kNoFeedColor : found->second);
  });
  table.Pair({.name = "GetColorForFeed", .size = std::size_t(rows), .peer = "a walk that converts each name"}, ours,
             [&] {
               const double above = step(c);
               double feed = 0;
               unsigned long color = 0;
               int more = colors.GetFirstValue(feed, color);
               while (more && feed <= above) more = colors.GetNextValue(feed, color);
               kvbench::Keep(color);
             });
}

}  // namespace

int main() {
  const std::filesystem::path folder = std::filesystem::temp_directory_path() / "kv-settings-bench";
  std::filesystem::remove_all(folder);
  std::filesystem::create_directories(folder);
  std::filesystem::current_path(folder);
  SetEnvironmentVariableW(_T("KV_REGISTRY"), folder.u16string().c_str());
  kvbench::Table table("Settings");
  for (const int count : {100, 700, 1000, 10000, 100000}) BenchGetValue(table, count);
  BenchRegistry(table, folder.string());
  SetEnvironmentVariableW(_T("KV_REGISTRY"), (folder / "application").u16string().c_str());
  BenchApplication(table, folder / "application");
  for (const int rows : {10, 100, 1000}) BenchFeedColors(table, rows);
  std::filesystem::current_path(folder.parent_path());
  std::filesystem::remove_all(folder);
}
