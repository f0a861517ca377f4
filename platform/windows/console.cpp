// The program's arguments and standard streams.
#include "platform/console.h"

#include <fcntl.h>
#include <shellapi.h>
#include <stdio.h>

#include "platform/utf8.h"

std::vector<std::string> Utf8Arguments(int, char**) {
  std::vector<std::string> arguments;
  int count = 0;
  LPWSTR* const words = CommandLineToArgvW(GetCommandLineW(), &count);
  for (int at = 0; words && at < count; ++at) arguments.push_back(Utf8FromWide(words[at]));
  LocalFree(words);
  return arguments;
}

void UseUtf8Streams() {
  for (FILE* const stream : {stdin, stdout, stderr}) _setmode(_fileno(stream), _O_BINARY);
  for (const DWORD output : {STD_OUTPUT_HANDLE, STD_ERROR_HANDLE}) {
    const HANDLE console = GetStdHandle(output);
    DWORD mode = 0;
    if (GetConsoleMode(console, &mode)) SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
  }
  SetConsoleCP(CP_UTF8);
  SetConsoleOutputCP(CP_UTF8);
}
