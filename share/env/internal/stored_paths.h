// Reading and storing a path in the registry and in the application settings.
#pragma once

#include "framework/text.h"
#include "platform/registry.h"

class QFSettingsKey;

// A text from the registry; empty if the value or its key is missing.
CString ReadStoredText(HKEY hive, LPCTSTR path, LPCTSTR name);
// The text from the user's hive; if that is empty, from the machine's hive.
CString ReadStoredTextOfUserOrMachine(LPCTSTR path, LPCTSTR name);
// Writes the text; creates the key if it is missing. A failure is ignored: the next start computes the path again.
void StoreText(HKEY hive, LPCTSTR path, LPCTSTR name, const CString& text);

// The text of that name in a tree; empty if it is missing or the tree is null.
CString TextOf(const QFSettingsKey* tree, LPCTSTR name);

// The path with a backslash at the end; an empty path becomes "\".
CString EndingInBackslash(CString path);
