#include "share/interface/help_system.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "framework/exception.h"
#include "framework/file.h"
#include "platform/files.h"
#include "platform/numbers.h"
#include "platform/shell.h"
#include "share/env/app_env.h"
#include "share/env/help_contexts.h"

namespace {

constexpr std::string_view kBlanks = " \t\v\f\r";
constexpr std::string_view kMark = "IDH_";
constexpr std::size_t kLongestLine = 1000;
constexpr ULONGLONG kLargestFile = 64 << 20;
constexpr std::intptr_t kLastFailure = 32;  // of the results of ShellExecuteW

struct Area {
  QFHelpFileType type;
  LPCTSTR compiled;
  LPCTSTR overview;  // null: none
};

constexpr Area kAreas[] = {
    {QF_HELP_MASTER, _T("Master.chm"), _T("common_overview.htm")},
    {QF_HELP_MILLING, _T("Milling.chm"), _T("common_overview.htm")},
    {QF_HELP_TURNING, _T("Turning.chm"), _T("tutorial_turning_quiktour1.htm")},
    {QF_HELP_EDM, _T("edm.chm"), _T("tutorial_wire_edm_quicktour.htm")},
    {QF_HELP_MULTIAXIS, _T("KVMultiAxis.chm"), _T("kvmultiaxis_multi_axis_machining_overview.htm")},
    {QF_HELP_API, _T("KVApiHelp.chm"), _T("api_kestrova_api_overview.htm")},
    {QF_HELP_TBM, _T("TBM.chm"), _T("Tolerance_Based_Machining.htm")},
    {QF_HELP_AM, _T("AM.chm"), nullptr},
    {QF_HELP_SHOPFLOOR, _T("shopfloor.chm"), nullptr},
};
constexpr Area kOther = {QF_HELP_MILLING, _T("Milling.chm"), nullptr};

const Area& AreaOf(QFHelpFileType type) {
  const auto* found = std::find_if(std::begin(kAreas), std::end(kAreas), [&](const Area& a) { return a.type == type; });
  return found == std::end(kAreas) ? kOther : *found;
}

// Empty if the file can't be read.
std::string BytesOf(const CString& path) {
  std::string bytes;
  try {
    CFile file;
    if (!file.Open(path, CFile::modeRead | CFile::shareDenyNone)) return {};
    const ULONGLONG length = file.GetLength();
    if (length > kLargestFile) return {};
    bytes.resize(std::size_t(length));
    bytes.resize(file.Read(bytes.data(), UINT(bytes.size())));
  } catch (const CFileException&) {
    return {};
  }
  return bytes;
}

// The next line without its end; removes it from the text.
std::string_view TakeLine(std::string_view& text) {
  const std::size_t end = std::min(text.find('\n'), text.size());
  const std::size_t length = std::min(end, kLongestLine);
  const std::string_view line = text.substr(0, length);
  text.remove_prefix(std::min(length + (length == end ? 1 : 0), text.size()));
  return line;
}

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = std::min(text.find_first_not_of(kBlanks), text.size());
  const std::size_t last = text.find_last_not_of(kBlanks);
  return last == text.npos ? std::string_view() : text.substr(first, last - first + 1);
}

CString PagePath(const CString& page) { return AppEnv()->GetKVHelpPath() + _T("\\HtmlHelp\\") + page; }

int Exists(const CString& path) {
  const DWORD attributes = GetFileAttributesW(path);
  return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

}  // namespace

// ---- the object and its map

QFHelpSystem* QFHelpSystem::m_pHlpInstance = nullptr;
int QFHelpSystem::m_IsHlpObjectCreated = 0;
std::map<int, CString> QFHelpSystem::m_Contexts;

QFHelpSystem::QFHelpSystem() { ReadContexts(AppEnv()->GetKVHelpPath()); }

QFHelpSystem* QFHelpSystem::Instance() {
  if (!m_pHlpInstance) {
    // The environment's start may make the object.
    if (CKVEnvApp* const environment = AppEnv(); environment && !m_pHlpInstance) m_pHlpInstance = new QFHelpSystem;
    m_IsHlpObjectCreated = 1;
  }
  return m_pHlpInstance;
}

void QFHelpSystem::DestroyInstance() {
  delete m_pHlpInstance;
  m_pHlpInstance = nullptr;
  m_IsHlpObjectCreated = 0;
}

void QFHelpSystem::ReadContexts(const CString& folder) {
  m_Contexts.clear();
  const std::string bytes = BytesOf(folder + _T("KVcontext.txt"));
  for (std::string_view text = bytes; !text.empty();) {
    const std::string_view line = TakeLine(text);
    if (!line.starts_with(kMark)) continue;
    const std::string_view entry = Trimmed(line).substr(kMark.size());
    const std::size_t comma = entry.find(',');
    if (comma == entry.npos) continue;
    m_Contexts[IntegerFromUtf8(entry.substr(0, comma))] = FromUtf8(entry.substr(comma + 1));
  }
}

// ---- names

int QFHelpSystem::GenerateHtmlHelpFileName(int context, CString& out) const {
  const auto found = m_Contexts.find(context);
  if (found == m_Contexts.end()) return 0;
  out = PagePath(found->second);
  return Exists(out);
}

int QFHelpSystem::GenerateHtmlHelpFileName(QFHelpFileType type, CString& out) const {
  const LPCTSTR overview = AreaOf(type).overview;
  if (!overview) return 0;
  out = PagePath(overview);
  return Exists(out);
}

CString QFHelpSystem::GetCompiledHelpFileName(QFHelpFileType type) const {
  return AppEnv()->GetKVHelpPath() + AreaOf(type).compiled;
}

// ---- requests

int QFHelpSystem::ShowHelp(QFHelpFileType type, ULONGLONG context, UINT) {
  CString page;
  if (GenerateHtmlHelpFileName(int(context), page)) {
    OpenPage(page, QFHelpShown::kPage);
  } else {
    OpenCompiled(type, kHelpContext, context);
  }
  return 1;
}

int QFHelpSystem::OnHelpFinder(QFHelpFileType type) { return OpenOverviewOr(type, kHelpContents); }

int QFHelpSystem::OnHelpIndex(QFHelpFileType type) { return OpenOverviewOr(type, kHelpIndex); }

int QFHelpSystem::OpenOverviewOr(QFHelpFileType type, UINT command) {
  CString page;
  if (GenerateHtmlHelpFileName(type, page)) {
    OpenPage(page, QFHelpShown::kOverview);
  } else {
    OpenCompiled(type, command, 0);
  }
  return 1;
}

void QFHelpSystem::OpenPage(const CString& page, QFHelpShown kind) {
  const auto result =
      reinterpret_cast<std::intptr_t>(ShellExecuteW(nullptr, _T("open"), page, nullptr, nullptr, SW_SHOWMAXIMIZED));
  const QFHelpShown failure = result == SE_ERR_NOASSOC ? QFHelpShown::kNoProgram : QFHelpShown::kProgramFailed;
  m_Shown = result > kLastFailure ? kind : failure;
  m_ShownFile = page;
}

void QFHelpSystem::OpenCompiled(QFHelpFileType type, UINT command, ULONGLONG context) {
  m_ShownFile = GetCompiledHelpFileName(type);
  m_Shown = QFHelpShown::kCompiled;
  if (OpenCompiledHelp(m_ShownFile, command, DWORD_PTR(context))) return;
  CString page;
  if (GenerateHtmlHelpFileName(type, page)) {
    OpenPage(page, QFHelpShown::kOverview);
    return;
  }
  m_Shown = QFHelpShown::kNothing;
  m_ShownFile.Empty();
}

// ---- the environment's start

class HelpContextLoader final : public HelpContexts {
 public:
  void Load(const CString& helpFolder) override {
    const bool exists = QFHelpSystem::m_pHlpInstance != nullptr;
    QFHelpSystem::Instance();
    if (exists) QFHelpSystem::ReadContexts(helpFolder);
  }
};

void RegisterHelpContexts() {
  static HelpContextLoader& loader = *new HelpContextLoader;  // never destroyed: an environment may start at the end
  SetHelpContexts(&loader);
}
