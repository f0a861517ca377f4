#include "host/crash/crash_test_command.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <memory>

#include "framework/text.h"
#include "host/crash/crash_kinds.h"
#include "host/module/main_module.h"
#include "host/shell/failure.h"
#include "host/shell/output.h"
#include "platform/files.h"
#include "platform/paths.h"
#include "share/diagnostics/exception_handler.h"

namespace kestrova {

namespace {

struct Options {
  std::string kind, folder;
  bool no_dump = false;
};

// The folder is tried first, because a crash itself reports no failure.
void RequireWritableFolder(const CString& folder) {
  TCHAR file[MAX_PATH] = {};
  const std::string shown = SystemPathFromProduct(folder);
  if (folder.GetLength() > int(MAX_PATH) - 15) throw Failure("the path of the folder is too long: " + shown);
  if (GetTempFileNameW(folder, _T("kv"), 0, file) == 0) {
    throw Failure("cannot write into the folder for crash files, " + shown + ": " + ErrorText(GetLastError()) +
                  "; choose another one with --folder, or in the value ExcpPath");
  }
  DeleteFileW(file);
}

void Run(const Options& options) {
  UseLibrary();
  QFExceptionHandler guard(1, options.no_dump ? 0 : 1);
  guard.SetWriteExceptionReport(1);  // also if the settings say no
  guard.SetDumpMiniFile(options.no_dump ? 0 : 1);
  if (!options.folder.empty()) guard.SetFilePath(ProductPathFromSystem(options.folder).c_str());
  RequireWritableFolder(guard.GetFilePath());
  Print("The files will be in {}\n", SystemPathFromProduct(guard.GetFilePath()));
  std::fflush(stdout);
  BreakOnPurpose(options.kind);
  throw Failure("this system has survived the fault " + options.kind);
}

}  // namespace

void AddCrashTest(CLI::App& group) {
  auto options = std::make_shared<Options>();
  CLI::App* const command = group.add_subcommand("test", "Break on purpose, with a report and a dump");
  command->add_option("kind", options->kind, "What to do wrong")->required()->check(CLI::IsMember(CrashKinds()));
  command->add_option("--folder", options->folder, "Folder of the files instead of the one in the settings");
  command->add_flag("--no-dump", options->no_dump, "Only the report");
  command->footer("Example:\n  kestrova crash test read --folder .\n");
  command->callback([options] { Run(*options); });
}

}  // namespace kestrova
