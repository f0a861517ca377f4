#include "tests/run_program.h"

#include "platform/files.h"
#include "platform/process.h"

namespace {

Text WideFromUtf8(const std::string& bytes) {
  Text text(bytes.size(), 0);
  text.resize(
      std::size_t(MultiByteToWideChar(CP_UTF8, 0, bytes.data(), int(bytes.size()), text.data(), int(text.size()))));
  return text;
}

// By the rules of CommandLineToArgvW: a quote gets a backslash, and backslashes before a quote are doubled.
Text Quoted(const Text& text) {
  Text result = L"\"";
  std::size_t backslashes = 0;
  for (const WCHAR unit : text) {
    if (unit == L'"') result.append(backslashes + 1, L'\\');
    backslashes = unit == L'\\' ? backslashes + 1 : 0;
    result += unit;
  }
  return result.append(backslashes, L'\\') + L'"';
}

HANDLE Open(const std::filesystem::path& path, DWORD access, DWORD disposition) {
  SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
  return CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, disposition, 0, nullptr);
}

}  // namespace

int kvtest::RunProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                       const std::filesystem::path& in, const std::filesystem::path& out,
                       const std::filesystem::path& err) {
  Text line = Quoted(std::filesystem::path(program).make_preferred().wstring());
  for (const std::string& argument : arguments) line += L' ' + Quoted(WideFromUtf8(argument));
  STARTUPINFOW start = {};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdInput = Open(in, GENERIC_READ, OPEN_EXISTING);
  start.hStdOutput = Open(out, GENERIC_WRITE, CREATE_ALWAYS);
  start.hStdError = Open(err, GENERIC_WRITE, CREATE_ALWAYS);
  PROCESS_INFORMATION process = {};
  const BOOL started =
      CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &process);
  for (const HANDLE file : {start.hStdInput, start.hStdOutput, start.hStdError}) CloseHandle(file);
  DWORD code = 127;
  if (!started) return int(code);
  WaitForSingleObject(process.hProcess, INFINITE);
  GetExitCodeProcess(process.hProcess, &code);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return int(code);
}
