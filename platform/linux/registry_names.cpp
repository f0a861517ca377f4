#include "platform/linux/registry_names.h"

#include <unicode/uchar.h>
#include <unicode/utf16.h>

#include <algorithm>

#include "platform/linux/letter_case.h"

namespace kvregistry {

namespace {

void AppendCharacter(std::string& out, UChar32 character) {
  const auto put = [&](UChar32 byte) { out.push_back(static_cast<char>(byte)); };
  if (character < 0x80) {
    put(character);
  } else if (character < 0x800) {
    put(0xC0 | character >> 6);
    put(0x80 | (character & 0x3F));
  } else {
    if (character < 0x10000) {
      put(0xE0 | character >> 12);
    } else {
      put(0xF0 | character >> 18);
      put(0x80 | (character >> 12 & 0x3F));
    }
    put(0x80 | (character >> 6 & 0x3F));
    put(0x80 | (character & 0x3F));
  }
}

UChar32 UpperAscii(UChar32 character) {
  return character >= 'a' && character <= 'z' ? character - ('a' - 'A') : character;
}

bool IsAscii(std::u16string_view name) {
  unsigned bits = 0;
  for (const char16_t unit : name) bits |= unit;
  return bits < 0x80;
}

template <bool kFold>
void AppendAscii(std::string& out, std::u16string_view name) {
  const std::size_t size = out.size();
  out.resize(size + name.size());
  std::transform(name.begin(), name.end(), out.begin() + std::ptrdiff_t(size),
                 [](char16_t unit) { return static_cast<char>(kFold ? UpperAscii(unit) : unit); });
}

template <bool kFold>
void Append(std::string& out, std::u16string_view name) {
  if (IsAscii(name)) return AppendAscii<kFold>(out, name);
  for (std::size_t i = 0; i < name.size();) {
    UChar32 character = name[i];
    if (character < 0x80) {
      out.push_back(static_cast<char>(kFold ? UpperAscii(character) : character));
      ++i;
      continue;
    }
    U16_NEXT(name.data(), i, name.size(), character);
    AppendCharacter(out, kFold && character <= 0xFFFF ? LowerOfOtherUnit(char16_t(character)) : character);
  }
}

// Takes one character off the front; a byte that belongs to none, which only a damaged file has, is U+FFFD.
UChar32 TakeCharacter(std::string_view& kept) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(kept[i]); };
  const unsigned lead = byte(0);
  const std::size_t size = lead < 0x80 ? 1 : lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  UChar32 character = size == 1 ? lead : lead & (0x7F >> size);
  bool good = lead < 0x80 || (lead >= 0xC0 && lead < 0xF8 && size <= kept.size());
  for (std::size_t i = 1; good && i < size; ++i) {
    good = (byte(i) & 0xC0) == 0x80;
    character = character << 6 | (byte(i) & 0x3F);
  }
  good = good && character <= 0x10FFFF;
  kept.remove_prefix(good ? size : 1);
  return good ? character : 0xFFFD;
}

}  // namespace

void AppendName(std::string& out, std::u16string_view name) { Append<false>(out, name); }

void AppendFolded(std::string& out, std::u16string_view name) { Append<true>(out, name); }

std::string FoldedInFormat1(std::string_view kept) {
  std::string folded;
  while (!kept.empty()) {
    const UChar32 character = TakeCharacter(kept);
    AppendCharacter(folded, UpperAscii(character < 0x80 ? character : u_foldCase(character, U_FOLD_CASE_DEFAULT)));
  }
  return folded;
}

DWORD UnitsOf(std::string_view kept) {
  DWORD units = 0;
  while (!kept.empty()) units += U16_LENGTH(TakeCharacter(kept));
  return units;
}

void Decode(std::string_view kept, LPWSTR units) {
  std::size_t at = 0;
  while (!kept.empty()) {
    const UChar32 character = TakeCharacter(kept);
    U16_APPEND_UNSAFE(units, at, character);
  }
  units[at] = 0;
}

}  // namespace kvregistry
