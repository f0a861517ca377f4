#include "host/crash/crash_list.h"

#include <fmt/format.h>
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <cstdio>
#include <memory>
#include <vector>

#include "framework/file_find.h"
#include "framework/text.h"
#include "framework/time.h"
#include "host/module/main_module.h"
#include "host/shell/failure.h"
#include "host/shell/output.h"
#include "host/shell/text_table.h"
#include "platform/crash_snapshot.h"
#include "platform/files.h"
#include "platform/paths.h"
#include "share/diagnostics/exception_handler.h"

namespace kestrova {

namespace {

constexpr int kSecondsOfDay = 24 * 60 * 60;

struct Options {
  std::string folder;
  bool json = false;
  bool force = false;
  int days = 0;
};

struct CrashFile {
  const char* kind;
  CString path;
  std::string name;
  ULONGLONG bytes;
  CTime changed;
};

// A file counts by its content: other programs' files have the same extensions.
struct Kind {
  LPCTSTR pattern;
  const char* name;
  std::string_view beginning;
};
constexpr Kind kKinds[] = {
    {_T("*-*.txt"), "report", "Error type          :    "},
    {_T("*-*.dmp"), "dump", "MDMP"},
    {_T("*-*.dmp~*.tmp"), "unfinished dump", ""},
};

bool BeginsWith(const CString& path, std::string_view beginning) {
  const std::unique_ptr<FILE, int (*)(FILE*)> file(_wfopen(path, _T("rb")), std::fclose);
  if (!file) return false;
  std::string bytes(beginning.size(), '\0');
  return std::fread(bytes.data(), 1, bytes.size(), file.get()) == bytes.size() && bytes == beginning;
}

CString FolderOf(const Options& options) {
  UseLibrary();
  QFExceptionHandler guard(0, 0);
  if (!options.folder.empty()) guard.SetFilePath(ProductPathFromSystem(options.folder).c_str());
  CString folder = guard.GetFilePath();
  const DWORD attributes = GetFileAttributesW(folder);
  if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_DIRECTORY))
    throw Failure("no such folder: " + SystemPathFromProduct(folder) + "; choose another one with --folder");
  return folder;
}

std::vector<CrashFile> FilesIn(const CString& folder) {
  std::vector<CrashFile> files;
  for (const Kind& kind : kKinds) {
    CFileFind find;
    for (BOOL more = find.FindFile(folder + kind.pattern); more;) {
      more = find.FindNextFile();
      const CString path = folder + find.GetFileName();
      if (find.MatchesMask(FILE_ATTRIBUTE_DIRECTORY) || !BeginsWith(path, kind.beginning)) continue;
      ULONGLONG bytes = 0;
      LONGLONG changed = 0;
      if (CrashFileFacts(SystemPathFromProduct(path), bytes, changed))
        files.push_back({kind.name, path, ToUtf8(find.GetFileName()), bytes, CTime(changed)});
    }
  }
  return files;
}

std::string TimeText(const CTime& time) { return ToUtf8(time.Format(_T("%Y-%m-%d %H:%M:%S"))); }

void List(const Options& options) {
  const CString folder = FolderOf(options);
  const std::vector<CrashFile> files = FilesIn(folder);
  if (options.json) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const CrashFile& file : files)
      list.push_back(
          {{"file", file.name}, {"kind", file.kind}, {"bytes", file.bytes}, {"time", TimeText(file.changed)}});
    PrintJson({{"folder", SystemPathFromProduct(folder)}, {"files", list}});
    return;
  }
  if (files.empty()) {
    Print("no crash files in {}\n", SystemPathFromProduct(folder));
    return;
  }
  TextTable table({{"file", false}, {"kind", false}, {"bytes", true}, {"time", false}});
  for (const CrashFile& file : files)
    table.Add({file.name, file.kind, std::to_string(file.bytes), TimeText(file.changed)});
  Print("{}\n", SystemPathFromProduct(folder));
  PrintLines(table.Text());
}

void Clean(const Options& options) {
  const CTime newest = CTime::GetCurrentTime() - CTimeSpan(LONGLONG(options.days) * kSecondsOfDay);
  std::vector<CrashFile> files = FilesIn(FolderOf(options));
  std::erase_if(files, [&](const CrashFile& file) { return options.days > 0 && file.changed > newest; });
  if (!options.force) {
    for (const CrashFile& file : files) Print("would remove {}\n", SystemPathFromProduct(file.path));
    Print("{}; --force removes\n", Counted(LONGLONG(files.size()), "file"));
    return;
  }
  for (const CrashFile& file : files) {
    if (!DeleteFileW(file.path))
      throw Failure("cannot remove " + SystemPathFromProduct(file.path) + ": " + ErrorText(GetLastError()));
  }
  Print("removed {}\n", Counted(LONGLONG(files.size()), "file"));
}

CLI::App* AddCommand(CLI::App& group, const char* name, const char* summary, Options& options) {
  CLI::App* const command = group.add_subcommand(name, summary);
  command->add_option("--folder", options.folder, "Folder of the files instead of the one in the settings");
  return command;
}

}  // namespace

void AddCrashList(CLI::App& group) {
  auto options = std::make_shared<Options>();
  CLI::App* const command =
      AddCommand(group, "list", "List the reports and dumps in the folder for crash files", *options);
  command->add_flag("--json", options->json, "Print JSON");
  command->footer("Example:\n  kestrova crash list\n");
  command->callback([options] { List(*options); });
}

void AddCrashClean(CLI::App& group) {
  auto options = std::make_shared<Options>();
  CLI::App* const command = AddCommand(group, "clean", "Remove the reports and dumps from that folder", *options);
  command->add_option("--older-than", options->days, "Only files of more than this number of days")
      ->check(CLI::Range(1, 36'500));
  command->add_flag("--force", options->force, "Remove; without it, only print what would be removed");
  command->footer("Example:\n  kestrova crash clean --older-than 30\n");
  command->callback([options] { Clean(*options); });
}

}  // namespace kestrova
