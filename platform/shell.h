// Opening documents with the programs of the user's desktop.
//
// ShellExecuteW has the platform's name and results. On Linux the desktop's own opener, xdg-open, chooses the program.
// Main thread only.
#pragma once

#include "platform/types.h"

#ifdef _WIN32

#include <shellapi.h>

#else

inline constexpr int SW_SHOWMAXIMIZED = 3;

// Results of ShellExecuteW; above 32 the document was opened.
inline constexpr int SE_ERR_FNF = 2;           // no such file
inline constexpr int SE_ERR_ACCESSDENIED = 5;  // the opener could not be started, or it failed
inline constexpr int SE_ERR_NOASSOC = 31;      // xdg-open is not installed, or it knows no program for the file

// Opens a file, named by its product path (platform/paths.h), with the user's program for it. operation is "open" or
// null. The call waits up to half a second for a failure of the opener, and never for the program. owner, parameters,
// folder and show have no effect.
KVSHARE_API HINSTANCE ShellExecuteW(HWND owner, LPCWSTR operation, LPCWSTR file, LPCWSTR parameters, LPCWSTR folder,
                                    int show);

#endif

// The commands of a compiled help file.
inline constexpr UINT kHelpContents = 0;  // opens the file
inline constexpr UINT kHelpIndex = 2;
inline constexpr UINT kHelpContext = 15;  // opens the page of a context number

// Opens a compiled help file (.chm) in the system's viewer, without an owner window. `context` is for kHelpContext.
// Returns false if there is no viewer, which the process looks for only once, or no such file. On Linux the viewer is
// xchm, which has no command for the index and shows the contents.
KVSHARE_API bool OpenCompiledHelp(LPCWSTR file, UINT command, DWORD_PTR context);
