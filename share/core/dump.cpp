// Printing into dumps.
#include "share/core/dump.h"

void DumpText(FILE* file, const CString& text) {
  if (!file) return;
  const std::string bytes = ToUtf8(text);
  std::fwrite(bytes.data(), 1, bytes.size(), file);
}

void DumpBanner(FILE* file, LPCTSTR className, LPCTSTR edge) {
  DumpPrint(file, _T("\n============================ %s %s ================================\n"), className, edge);
}

void DumpFlag(FILE* file, LPCTSTR name, bool flag) {
  DumpPrint(file, _T("\n %s : %s"), name, flag ? _T("YES") : _T("NO"));
}
