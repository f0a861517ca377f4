// Documents and compiled help files, opened by programs of the desktop.
#include "platform/shell.h"

#include <unistd.h>

#include <string>

#include "platform/linux/desktop_programs.h"
#include "platform/paths.h"

namespace {

constexpr int kOpened = 42;             // the platform's usual result
constexpr int kOpenerHasNoProgram = 3;  // exit code of xdg-open: a tool that it needs is missing

HINSTANCE Result(int code) { return reinterpret_cast<HINSTANCE>(std::intptr_t(code)); }

}  // namespace

HINSTANCE ShellExecuteW(HWND, LPCWSTR, LPCWSTR file, LPCWSTR, LPCWSTR, int) {
  const std::string path = SystemPathFromProduct(file);
  if (path.empty() || access(path.c_str(), F_OK) != 0) return Result(SE_ERR_FNF);
  const std::string opener = FindProgram("xdg-open");
  if (opener.empty()) return Result(SE_ERR_NOASSOC);
  const int code = StartProgram(opener, {path.starts_with('-') ? "./" + path : path});
  if (code == kOpenerHasNoProgram) return Result(SE_ERR_NOASSOC);
  return Result(code == 0 ? kOpened : SE_ERR_ACCESSDENIED);
}

bool OpenCompiledHelp(LPCWSTR file, UINT command, DWORD_PTR context) {
  static const std::string viewer = FindProgram("xchm");
  const std::string path = SystemPathFromProduct(file);
  if (viewer.empty() || path.empty() || access(path.c_str(), R_OK) != 0) return false;
  std::vector<std::string> arguments = {path};
  if (command == kHelpContext) arguments.insert(arguments.begin(), "--contextid=" + std::to_string(context));
  return StartProgram(viewer, arguments) == 0;
}
