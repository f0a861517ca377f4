#include "platform/console.h"

#include <unistd.h>

#include <cstdio>

#include "platform/linux/utf8.h"

int _isatty(int stream) { return isatty(stream); }

void OutputDebugStringW(LPCWSTR text) { std::fputs(Utf8FromWide(text).c_str(), stderr); }
