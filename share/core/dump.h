// Printing into object dumps: the files that DumpData of every class writes for support staff, UTF-8.
#pragma once

#include <cstdio>

#include "framework/text.h"

// Writes the text as UTF-8. A null file is left alone; a failed write shows in ferror(file).
KVSHARE_API void DumpText(FILE* file, const CString& text);

// Writes "\n=...= <class> <edge> =...=\n", the banner around an object's fields; edge is "Start" or "End".
KVSHARE_API void DumpBanner(FILE* file, LPCTSTR className, LPCTSTR edge);

// Writes "\n <name> : YES" or NO.
KVSHARE_API void DumpFlag(FILE* file, LPCTSTR name, bool flag);

// Formats as CString::Format does and writes the result.
template <class... Arguments>
void DumpPrint(FILE* file, LPCTSTR format, const Arguments&... arguments) {
  CString text;
  text.Format(format, arguments...);
  DumpText(file, text);
}
