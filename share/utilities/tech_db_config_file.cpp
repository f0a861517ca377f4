// Reads, repairs and writes "database.config".
#include "share/utilities/tech_db_config_file.h"

#include <algorithm>
#include <iterator>

#include "companions/database/connection_strings.h"
#include "companions/xml/xml_document.h"
#include "platform/files.h"
#include "share/utilities/files_and_folders.h"

namespace {

constexpr LPCTSTR kActive = _T("Default");
constexpr LPCTSTR kType = _T("databaseType");

// In the order of QFTechDBType.
constexpr LPCTSTR kTypes[] = {_T("sqlite"), _T("ms-access"), _T("sql")};

bool Same(const CString& text, LPCTSTR other) { return text.CompareNoCase(other) == 0; }

// The value of the first child element with that name; empty without one.
CString ValueOf(KVXMLNode& setting, LPCTSTR name) {
  KVXMLNodeList& children = *setting.GetChildNodes();
  for (long i = 0; i < children.GetSize(); ++i) {
    if (children[i]->GetNodeName() == name) return children[i]->GetNodeValue();
  }
  return CString();
}

CString AttributeOf(const KVXMLNode& node, LPCTSTR name) {
  CString value;
  node.GetAttributeValue(name, value);
  return value;
}

// True for the node of a database; sets type to its type attribute.
bool IsSetting(const KVXMLNode& node, CString& type) {
  return Same(node.GetNodeName(), _T("setting")) && node.GetAttributeValue(kType, type);
}

// ---- entries

// Each function fills an entry from its element; false if a necessary value is missing.

bool ReadFilePath(KVXMLNode& setting, const CString& folder, QFTechDBConfigData& entry) {
  const CString path = ValueOf(setting, _T("filePath"));
  entry.SetFilePath(path.Find(_T('\\')) < 0 ? folder + path : path);
  return !path.IsEmpty();
}

bool ReadSQLite(KVXMLNode& setting, const CString& folder, QFTechDBConfigData& entry) {
  if (!ReadFilePath(setting, folder, entry)) return false;
  entry.SetConnectionString(SQLiteConnection(entry.GetFilePath()));
  entry.SetDescription(ValueOf(setting, _T("description")));
  return true;
}

bool ReadAccess(KVXMLNode& setting, const CString& folder, QFTechDBConfigData& entry) {
  if (!ReadFilePath(setting, folder, entry)) return false;
  entry.SetConnectionString(AccessConnection(entry.GetFilePath()));
  return true;
}

bool ReadServer(KVXMLNode& setting, const CString&, QFTechDBConfigData& entry) {
  const CString server = ValueOf(setting, _T("serverID"));
  const CString database = ValueOf(setting, _T("databaseName"));
  entry.SetConnectionString(
      Same(ValueOf(setting, _T("authenticationMode")), _T("windows"))
          ? ServerConnection(server, database)
          : ServerConnection(server, database, ValueOf(setting, _T("userID")), ValueOf(setting, _T("password"))));
  return true;
}

constexpr bool (*kReaders[])(KVXMLNode&, const CString&, QFTechDBConfigData&) = {ReadSQLite, ReadAccess, ReadServer};
static_assert(std::size(kReaders) == std::size(kTypes));

void ReadSetting(KVXMLNode& setting, const CString& type, const CString& folder, QFTechDBConfigInfo& info) {
  for (int i = 0; i < int(std::size(kTypes)); ++i) {
    if (!Same(type, kTypes[i])) continue;
    auto entry = std::make_unique<QFTechDBConfigData>();
    entry->SetDatabaseType(i);
    entry->SetActiveFlag(Same(AttributeOf(setting, kActive), _T("True")));
    if (kReaders[i](setting, folder, *entry)) info.AddTechDBConfigData(entry.release());
  }
}

// ---- the file

// The file and its list of databases; comments and texts are children of the list, too.
struct ConfigFile {
  explicit ConfigFile(const CString& filePath, bool keepPlaces = false) : path(filePath) {
    document.KeepPlaces(keepPlaces);
    document.KeepWhole(true);
    document.SetMostBytes(kTechDBConfigMostBytes);
    KVXMLNode* root = document.LoadFromFile(path);
    if (!root) return;
    KVXMLNodeList& children = *root->GetChildNodes();
    for (long i = 0; i < children.GetSize() && !settings; ++i) {
      if (Same(children[i]->GetNodeName(), _T("applicationSettings"))) settings = children[i]->GetChildNodes();
    }
  }

  bool IsMissing() const { return document.LastFailure().kind == KVXMLFailure::Kind::kMissing; }

  CString path;
  KVXMLDocument document;
  KVXMLNodeList* settings = nullptr;
};

// ---- faults

constexpr std::size_t kMostFaults = 100;

// The fault of an entry; an empty text without one. `dropped` says whether the list lacks the entry.
std::string FaultOf(KVXMLNode& setting, bool& dropped) {
  CString type;
  dropped = true;
  if (!setting.GetAttributeValue(kType, type)) return "this setting has no databaseType, so it is ignored";
  const auto is = [&type](LPCTSTR other) { return Same(type, other); };
  const auto* const known = std::find_if(std::begin(kTypes), std::end(kTypes), is);
  if (known == std::end(kTypes))
    return "databaseType \"" + ToUtf8(type) + "\" is not known: use sqlite, ms-access or sql";
  if (known - std::begin(kTypes) == QF_TECHDB_SQLSERVER) return {};
  const CString path = ValueOf(setting, _T("filePath"));
  if (path.IsEmpty()) return "this database has no filePath, so it is ignored";
  dropped = false;
  if (path.Find(_T(';')) >= 0)
    return "filePath \"" + ToUtf8(path) + "\" has a semicolon, so the database cannot be opened";
  if (path[0] == _T('/')) {
    CString product = path;
    product.Replace(_T('/'), _T('\\'));
    return "filePath \"" + ToUtf8(path) + "\" has no backslash, so it is a name in the folder of this file: write " +
           ToUtf8(product);
  }
  return {};
}

// Marks the only database of a file as active and saves the file. If both of two children are databases, the last one
// gets the mark: it is the active one without a mark, too.
void AddMissingMark(ConfigFile& file) {
  if (file.settings->GetSize() != 2) return;
  CString type;
  KVXMLNode* found = nullptr;
  for (long i = 0; i < 2; ++i) {
    if (IsSetting(*(*file.settings)[i], type)) found = (*file.settings)[i];
  }
  if (found && found->AddAttribute(kActive, _T("True"))) file.document.Save(file.path);
}

}  // namespace

int ReadTechDBConfig(const CString& folder, const CString& defaultDatabase, QFTechDBConfigInfo& info) try {
  if (folder.IsEmpty()) return 0;
  ConfigFile file(folder + kTechDBConfigFile);
  if (!file.IsMissing()) {
    if (!file.settings) return 0;
    AddMissingMark(file);
    CString type;
    for (long i = 0; i < file.settings->GetSize() && info.GetCount() < kTechDBConfigMostEntries; ++i) {
      KVXMLNode& node = *(*file.settings)[i];
      if (IsSetting(node, type)) ReadSetting(node, type, folder, info);
    }
    return 1;
  }
  if (!QFFileAndFolderUtilities().DoesFileExist(defaultDatabase)) return 0;
  auto entry = std::make_unique<QFTechDBConfigData>();
  entry->SetFilePath(defaultDatabase);
  entry->SetConnectionString(SQLiteConnection(defaultDatabase));
  entry->SetActiveFlag(1);
  return info.AddTechDBConfigData(entry.release());
} catch (...) {  // out of memory
  return 0;
}

std::vector<TechDBConfigFault> FindTechDBConfigFaults(const CString& folder) {
  std::vector<TechDBConfigFault> faults;
  ConfigFile file(folder + kTechDBConfigFile, /*keepPlaces=*/true);
  const KVXMLFailure& failure = file.document.LastFailure();
  if (file.IsMissing()) return faults;
  if (failure.kind != KVXMLFailure::Kind::kNone) {
    const DWORD attributes = GetFileAttributesW(file.path);
    const bool is_folder = attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    return {
        {failure.place.line, failure.place.column, is_folder ? "it is a folder" : failure.reason, /*dropped=*/true}};
  }
  if (!file.settings) return {{1, 1, "the file has no element applicationSettings", /*dropped=*/true}};
  for (long i = 0; i < file.settings->GetSize() && faults.size() < kMostFaults; ++i) {
    KVXMLNode& node = *(*file.settings)[i];
    if (!Same(node.GetNodeName(), _T("setting"))) continue;
    bool dropped = false;
    std::string text = FaultOf(node, dropped);
    const KVXMLPlace place = file.document.PlaceOf(node.Element());
    if (!text.empty()) faults.push_back({place.line, place.column, std::move(text), dropped});
  }
  return faults;
}

int WriteTechDBConfig(const CString& folder, const QFTechDBConfigInfo& info) {
  ConfigFile file(folder + kTechDBConfigFile);
  if (!file.settings || file.settings->GetSize() != long(info.GetCount()) + 1) return 0;
  for (int i = 0; i < info.GetCount(); ++i) {
    const QFTechDBConfigData& entry = *info.GetTechDBConfigData(i);
    KVXMLNode& node = *(*file.settings)[i + 1];
    const int known = entry.GetDatabaseType();
    CString type;
    if (!IsSetting(node, type) || known < 0 || known >= int(std::size(kTypes)) || !Same(type, kTypes[known])) return 0;
    const LPCTSTR flag = entry.GetActiveFlag() ? _T("True") : _T("False");
    if (!node.SetAttributeValue(kActive, flag)) node.AddAttribute(kActive, flag);
  }
  return file.document.Save(file.path);
}
