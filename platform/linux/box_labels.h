// The labels of the standard buttons in the user's language.
#pragma once

#include <string_view>

// For IDOK to IDHELP; English for a language without a row.
std::u16string_view LabelOfButton(int id);
// The label in English, without the mark of a shortcut.
std::u16string_view EnglishLabelOfButton(int id);
