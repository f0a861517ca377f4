// Printing into dumps: UTF-8 files for support staff, written by DumpData of every class.
#pragma once

#include <cstdio>

#include "framework/text.h"

// Writes the text as UTF-8. Does nothing for a null file. ferror(file) reports a failed write.
KVSHARE_API void DumpText(FILE* file, const CString& text);

// Writes "\n=...= <class> <edge> =...=\n", the line before and after an object's fields. edge is "Start" or "End".
KVSHARE_API void DumpBanner(FILE* file, LPCTSTR className, LPCTSTR edge);

// Writes "\n <name> : YES" or "\n <name> : NO".
KVSHARE_API void DumpFlag(FILE* file, LPCTSTR name, bool flag);

// Writes the text that CString::Format makes from the arguments.
template <class... Arguments>
void DumpPrint(FILE* file, LPCTSTR format, const Arguments&... arguments) {
  CString text;
  text.Format(format, arguments...);
  DumpText(file, text);
}
