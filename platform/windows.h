// Message boxes and dialogs, their controls, and hooks.
//
// On Linux a box or dialog appears in the first of these ways that is possible:
//   1. as answers from the file that the environment variable KV_ANSWERS names (platform/answers.h);
//   2. as a window, by the module libKVSHAREdesktop.so, if the process has a QApplication or an X server is reachable;
//   3. as a question on the terminal, if standard input and stderr are one: a letter for each button, Enter for the
//      focused one, Ctrl-D for none;
//   4. as one line on stderr. The box then fails.
// Any thread may show one. A window handle of a dialog is valid until the dialog ends and works on its thread only. A
// call with an invalid handle fails with ERROR_INVALID_WINDOW_HANDLE.
#pragma once

#include "platform/resources.h"
#include "platform/types.h"

#ifndef _WIN32

#ifndef CALLBACK
#define CALLBACK
#endif

// ---- types

using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;
using LRESULT = std::intptr_t;
using INT_PTR = std::intptr_t;

struct HHOOK__;
using HHOOK = HHOOK__*;

// ---- message boxes

inline constexpr UINT MB_OK = 0x0;
inline constexpr UINT MB_OKCANCEL = 0x1;
inline constexpr UINT MB_ABORTRETRYIGNORE = 0x2;
inline constexpr UINT MB_YESNOCANCEL = 0x3;
inline constexpr UINT MB_YESNO = 0x4;
inline constexpr UINT MB_RETRYCANCEL = 0x5;
inline constexpr UINT MB_ICONSTOP = 0x10;
inline constexpr UINT MB_ICONQUESTION = 0x20;
inline constexpr UINT MB_ICONEXCLAMATION = 0x30;
inline constexpr UINT MB_ICONINFORMATION = 0x40;
inline constexpr UINT MB_DEFBUTTON2 = 0x100;  // the second button has the focus; 0x200 and 0x300 the third and fourth
inline constexpr UINT MB_HELP = 0x4000;
inline constexpr UINT MB_SETFOREGROUND = 0x10000;

inline constexpr int IDOK = 1;
inline constexpr int IDCANCEL = 2;
inline constexpr int IDABORT = 3;
inline constexpr int IDRETRY = 4;
inline constexpr int IDIGNORE = 5;
inline constexpr int IDYES = 6;
inline constexpr int IDNO = 7;
inline constexpr int IDHELP = 9;

inline constexpr LONG ERROR_INVALID_WINDOW_HANDLE = 1400;
inline constexpr LONG ERROR_CONTROL_ID_NOT_FOUND = 1421;
inline constexpr LONG ERROR_INVALID_MSGBOX_STYLE = 1438;

// Shows a text with the buttons of `style`, and waits. Returns the number of the pressed button; 0 if the box cannot
// appear, with ERROR_INVALID_MSGBOX_STYLE for unknown buttons. Escape and the window's close button press Cancel, or OK
// if it is the only button; otherwise they have no effect. The labels are in the user's language (platform/locale.h).
// The owner is a window of the host or null; it accepts no input while the box is shown.
KVSHARE_API int MessageBoxW(HWND owner, LPCWSTR text, LPCWSTR caption, UINT style);

inline constexpr int HELPINFO_WINDOW = 1;

struct HELPINFO {
  UINT cbSize;
  int iContextType;  // HELPINFO_WINDOW
  int iCtrlId;
  HANDLE hItemHandle;
  DWORD_PTR dwContextId;
  POINT MousePos;
};
using MSGBOXCALLBACK = void(CALLBACK*)(HELPINFO* request);

struct MSGBOXPARAMSW {
  UINT cbSize;
  HWND hwndOwner;
  HINSTANCE hInstance;  // no effect on Linux
  LPCWSTR lpszText;
  LPCWSTR lpszCaption;
  DWORD dwStyle;
  LPCWSTR lpszIcon;           // no effect on Linux
  DWORD_PTR dwContextHelpId;  // for the callback
  MSGBOXCALLBACK lpfnMsgBoxCallback;
  DWORD dwLanguageId;  // no effect on Linux
};

// The same; the Help button and F1 call the callback on this thread and leave the box open.
KVSHARE_API int MessageBoxIndirectW(const MSGBOXPARAMSW* request);

// ---- hooks

inline constexpr int WH_CBT = 5;
inline constexpr int HCBT_ACTIVATE = 5;
using HOOKPROC = LRESULT(CALLBACK*)(int code, WPARAM wParam, LPARAM lParam);

// Installs a hook for the calling thread; kind is WH_CBT, module null. It is called with HCBT_ACTIVATE and the window
// when a box or dialog of the thread becomes active, before the user sees it; other events are not reported on Linux.
// Null on failure. The caller removes it with UnhookWindowsHookEx, on the same thread.
KVSHARE_API HHOOK SetWindowsHookExW(int kind, HOOKPROC procedure, HINSTANCE module, DWORD thread);
KVSHARE_API BOOL UnhookWindowsHookEx(HHOOK hook);
// Calls the hook that was installed before the running one; 0 if there is none. The first argument has no effect.
KVSHARE_API LRESULT CallNextHookEx(HHOOK hook, int code, WPARAM wParam, LPARAM lParam);

// ---- controls

// The control of that number in a box or dialog; null if there is none.
KVSHARE_API HWND GetDlgItem(HWND dialog, int control);
// A "&" in a button's label marks the letter of its shortcut.
KVSHARE_API BOOL SetDlgItemTextW(HWND dialog, int control, LPCWSTR text);

// Enables or disables a control, or a window of the host. TRUE if it was disabled before.
KVSHARE_API BOOL EnableWindow(HWND window, BOOL enable);
KVSHARE_API BOOL IsWindowEnabled(HWND window);
inline constexpr int SW_HIDE = 0;
inline constexpr int SW_SHOW = 5;
// Shows or hides a control. TRUE if it was visible before.
KVSHARE_API BOOL ShowWindow(HWND window, int show);
KVSHARE_API BOOL IsWindowVisible(HWND window);

// The title of a window, or the text of a control. The copy is cut to units - 1 and terminated; the result is its
// length.
KVSHARE_API BOOL SetWindowTextW(HWND window, LPCWSTR text);
KVSHARE_API int GetWindowTextW(HWND window, LPWSTR buffer, int units);
KVSHARE_API int GetWindowTextLengthW(HWND window);

inline constexpr UINT BST_UNCHECKED = 0;
inline constexpr UINT BST_CHECKED = 1;
KVSHARE_API BOOL CheckDlgButton(HWND dialog, int control, UINT check);
KVSHARE_API UINT IsDlgButtonChecked(HWND dialog, int control);

inline constexpr UINT WM_NEXTDLGCTL = 0x0028;

// Sends a message to a box or dialog after the calls that run now. WM_NEXTDLGCTL with 0, 0 moves the focus to the next
// control, with 1, 0 to the former one.
KVSHARE_API BOOL PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// ---- dialogs

inline constexpr UINT WM_HELP = 0x0053;
inline constexpr UINT WM_INITDIALOG = 0x0110;
inline constexpr UINT WM_COMMAND = 0x0111;
inline constexpr WORD BN_CLICKED = 0;
using DLGPROC = INT_PTR(CALLBACK*)(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

// Shows the dialog template of that number (MAKEINTRESOURCEW) until EndDialog, and returns its result; -1 if the module
// has no such template, if it is damaged, or if the dialog cannot appear. The procedure gets WM_INITDIALOG with the
// parameter before the dialog is shown; it may end the dialog, which then never appears. It gets WM_COMMAND with the
// control's number and BN_CLICKED for a click, with IDCANCEL for Escape and the close button, and WM_HELP for F1. No
// exception may leave it.
KVSHARE_API INT_PTR DialogBoxParamW(HINSTANCE module, LPCWSTR name, HWND owner, DLGPROC procedure, LPARAM parameter);
KVSHARE_API BOOL EndDialog(HWND dialog, INT_PTR result);

// ---- cursor

struct HICON__;
using HCURSOR = HICON__*;
#define IDC_ARROW MAKEINTRESOURCEW(32512)
#define IDC_WAIT MAKEINTRESOURCEW(32514)
// One of the two cursors; module is null. Null for another.
KVSHARE_API HCURSOR LoadCursorW(HINSTANCE module, LPCWSTR name);
// Shows the cursor over all windows of the application, until the next call. Returns the one before, at first null,
// which stands for the arrow. On Linux it has an effect only if the process has a QApplication.
KVSHARE_API HCURSOR SetCursor(HCURSOR cursor);

// ---- texts of statuses

inline constexpr DWORD FORMAT_MESSAGE_IGNORE_INSERTS = 0x200;
inline constexpr DWORD FORMAT_MESSAGE_FROM_SYSTEM = 0x1000;

// Copies the text of a status and a terminator; on Linux that of ErrorText (platform/errors.h) as a sentence, whatever
// the language. flags are both flags above, source and arguments null. Returns the text's length; 0 with
// ERROR_INSUFFICIENT_BUFFER or ERROR_INVALID_PARAMETER.
KVSHARE_API DWORD FormatMessageW(DWORD flags, const void* source, DWORD status, DWORD language, LPWSTR buffer,
                                 DWORD units, void* arguments);

#endif
