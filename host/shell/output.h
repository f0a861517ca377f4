// What a command prints. A name or value from a file, the registry or an argument can hold bytes that control the
// terminal or end a line; these functions make such bytes harmless. No command writes to stdout by another way.
#pragma once

#include <fmt/format.h>

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <type_traits>

namespace kestrova {

// The text for one line of a terminal: control characters (below U+0020, U+007F to U+009F) become blanks, bytes that
// are not UTF-8 become \xNN.
std::string Harmless(std::string_view text);

// The same in place, from byte `from` on.
void MakeHarmless(std::string& text, std::size_t from = 0);

// "1 error", "2 errors".
std::string Counted(long long count, const char* what);

namespace internal {

template <class Argument>
decltype(auto) Shown(const Argument& argument) {
  if constexpr (std::is_convertible_v<const Argument&, std::string_view>) {
    return Harmless(argument);
  } else {
    return (argument);
  }
}

template <class Argument>
using ShownAs = decltype(Shown(std::declval<const Argument&>()));

}  // namespace internal

// Prints text with line ends, such as a table of harmless cells. Line ends stay; the rest becomes harmless.
void PrintLines(std::string_view text);

// Prints a format with its arguments to stdout, as fmt::print does. Line ends of the format stay; each argument that is
// text becomes harmless.
template <class... Arguments>
void Print(fmt::format_string<internal::ShownAs<Arguments>...> format, const Arguments&... arguments) {
  PrintLines(fmt::format(format, internal::Shown(arguments)...));
}

// A JSON value as text, on one line or, with an indent of 0 or more, on several. Text that is not UTF-8 gets U+FFFD;
// all control characters are escaped.
std::string JsonText(const nlohmann::ordered_json& json, int indent = -1);

// Prints a JSON value with an indent of two blanks and a line end.
void PrintJson(const nlohmann::ordered_json& json);

// Prints a JSON object member by member, with the same text as PrintJson: for an object that is too large to be built.
// Each Open needs its Close.
class JsonPrinter {
 public:
  // Opens the object.
  JsonPrinter() { Open({}, '{'); }
  // Prints a member, or an element of an array with an empty name.
  void Add(std::string_view name, const nlohmann::ordered_json& value);
  // Prints an integer as an element of an array.
  void AddElement(int number);
  // Opens an object or an array, by '{' or '[', as a member or element.
  void Open(std::string_view name, char bracket);
  // Closes the last one opened. After the first one, a line end follows.
  void Close();

 private:
  void Begin(std::string_view name);

  std::string closing_;  // the closing brackets of what is open
  bool empty_ = true;    // nothing is in the last one opened
};

// Prints a line on stderr for something that does not end the command.
void PrintNote(const std::string& text);

// Prints a line on stderr without allocating, for a failure that can't be reported otherwise.
void PrintOutOfMemory() noexcept;

// Prints bytes as they are: a value for a script, an export, or text of this program's own.
void PrintRaw(std::string_view bytes);

}  // namespace kestrova
