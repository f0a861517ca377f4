// Dialog templates of resource libraries.
#pragma once

#include <cstddef>
#include <optional>
#include <span>

#include "platform/linux/dialog_view.h"

// The dialog of an extended template (DIALOGEX); no value for damaged bytes, other kinds of templates, and dialogs of
// more than 255 controls or of an unreasonable size. Buttons, check boxes, group boxes and static texts are shown;
// other controls have no view.
std::optional<DialogState> ParseDialogTemplate(std::span<const std::byte> bytes);

// The dialog of that number in a module that was loaded as data; no value, with the last status set, if there is none.
std::optional<DialogState> ReadDialog(HMODULE module, LPCWSTR name);
