// How the environment's sources read and keep a path: in the registry, and in the application settings.
#pragma once

#include "framework/text.h"
#include "platform/registry.h"

class QFSettingsKey;

// A text kept in the registry; empty if the value or its key is missing.
CString ReadKeptText(HKEY hive, LPCTSTR path, LPCTSTR name);
// The user's text of that name; if that is empty, the machine's.
CString ReadKeptTextOfUserOrMachine(LPCTSTR path, LPCTSTR name);
// Creates the key if it is missing. What can't be written is lost: the next start computes it again.
void KeepText(HKEY hive, LPCTSTR path, LPCTSTR name, const CString& text);

// The text of that name in a tree; empty if there is none. A null tree has none.
CString TextOf(const QFSettingsKey* tree, LPCTSTR name);

// The path with a backslash behind, unless it ends in one: the empty one becomes "\".
CString EndingInBackslash(CString path);
