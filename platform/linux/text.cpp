// Text conversion with ICU, and case. ASCII, the most frequent text, is copied without a decoder.
#include "platform/text.h"

#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <limits>
#include <string_view>

#include "platform/linux/errno_status.h"
#include "platform/linux/letter_case.h"

namespace {

constexpr UINT kCodePage1252 = 1252;

// 0x80 to 0x9F of code page 1252; the five undefined bytes map to themselves.
constexpr char16_t kUpper1252[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

// Collects the output, or only counts it if the caller gave no buffer.
template <class Unit>
class Sink {
 public:
  Sink(Unit* target, int room) : target_(target), room_(room) {}
  void Put(Unit unit) {
    if (room_ != 0 && count_ < room_) target_[count_] = unit;
    ++count_;
  }
  // The number of units; 0 if they do not fit.
  int Result() const {
    return (room_ != 0 && count_ > room_) || count_ > std::numeric_limits<int>::max() ? 0 : int(count_);
  }

 private:
  Unit* target_;
  LONGLONG room_;
  LONGLONG count_ = 0;
};

int Utf8ToWide(const char* bytes, int length, Sink<char16_t> out) {
  for (int i = 0; i < length;) {
    if (static_cast<signed char>(bytes[i]) >= 0) {
      out.Put(static_cast<char16_t>(bytes[i++]));
      continue;
    }
    UChar32 character = 0;
    U8_NEXT_OR_FFFD(reinterpret_cast<const std::uint8_t*>(bytes), i, length, character);
    if (character > 0xFFFF) {
      out.Put(U16_LEAD(character));
      out.Put(U16_TRAIL(character));
    } else {
      out.Put(static_cast<char16_t>(character));
    }
  }
  return out.Result();
}

int WideToUtf8(const char16_t* units, int length, Sink<char> out) {
  for (int i = 0; i < length;) {
    UChar32 character = units[i];
    if (character < 0x80) {
      out.Put(static_cast<char>(character));
      ++i;
      continue;
    }
    U16_NEXT_OR_FFFD(units, i, length, character);
    std::uint8_t encoded[U8_MAX_LENGTH];
    int size = 0;
    U8_APPEND_UNSAFE(encoded, size, character);
    for (int k = 0; k < size; ++k) out.Put(static_cast<char>(encoded[k]));
  }
  return out.Result();
}

char16_t Widen1252(unsigned char byte) { return byte >= 0x80 && byte < 0xA0 ? kUpper1252[byte - 0x80] : byte; }

bool Narrow1252(char16_t unit, char& byte) {
  if (unit < 0x80 || (unit >= 0xA0 && unit <= 0xFF)) {
    byte = static_cast<char>(unit);
    return true;
  }
  for (int i = 0; i < 32; ++i) {
    if (kUpper1252[i] == unit) {
      byte = static_cast<char>(0x80 + i);
      return true;
    }
  }
  return false;
}

template <class Unit>
int LengthOf(const Unit* text, int given) {
  return given >= 0 ? given : int(std::basic_string_view<Unit>(text).size()) + 1;
}

// The unit at a place; -1 after the end of the text, which a negative number of units leaves to the terminator.
int UnitAt(LPCWSTR text, int units, int at) {
  const bool ended = units < 0 ? text[at] == 0 : at == units;
  return ended ? -1 : text[at];
}

}  // namespace

int MultiByteToWideChar(UINT codePage, DWORD, LPCSTR source, int sourceBytes, LPWSTR target, int targetUnits) {
  if (!source || sourceBytes == 0 || targetUnits < 0) return 0;
  const int length = LengthOf(source, sourceBytes);
  Sink<char16_t> out(target, targetUnits);
  if (codePage == CP_UTF8) return Utf8ToWide(source, length, out);
  if (codePage != kCodePage1252) return 0;
  for (int i = 0; i < length; ++i) out.Put(Widen1252(static_cast<unsigned char>(source[i])));
  return out.Result();
}

int WideCharToMultiByte(UINT codePage, DWORD, LPCWSTR source, int sourceUnits, LPSTR target, int targetBytes,
                        LPCSTR defaultCharacter, BOOL* usedDefault) {
  if (usedDefault) *usedDefault = FALSE;
  if (!source || sourceUnits == 0 || targetBytes < 0) return 0;
  const int length = LengthOf(source, sourceUnits);
  Sink<char> out(target, targetBytes);
  if (codePage == CP_UTF8) return WideToUtf8(source, length, out);
  if (codePage != kCodePage1252) return 0;
  for (int i = 0; i < length; ++i) {
    char byte = defaultCharacter ? *defaultCharacter : '?';
    if (!Narrow1252(source[i], byte) && usedDefault) *usedDefault = TRUE;
    out.Put(byte);
  }
  return out.Result();
}

DWORD CharUpperBuffW(LPWSTR text, DWORD units) {
  std::transform(text, text + units, text, UpperUnit);
  return units;
}

DWORD CharLowerBuffW(LPWSTR text, DWORD units) {
  std::transform(text, text + units, text, LowerUnit);
  return units;
}

int CompareStringOrdinal(LPCWSTR a, int aUnits, LPCWSTR b, int bUnits, BOOL ignoreCase) {
  if (!a || !b || (ignoreCase != FALSE && ignoreCase != TRUE)) return FailWithStatus(ERROR_INVALID_PARAMETER);
  for (int at = 0;; ++at) {
    int x = UnitAt(a, aUnits, at);
    int y = UnitAt(b, bUnits, at);
    if (x == y && x < 0) return CSTR_EQUAL;
    if (x == y) continue;
    if (ignoreCase && x >= 0 && y >= 0) {
      x = UpperUnit(WCHAR(x));
      y = UpperUnit(WCHAR(y));
    }
    if (x != y) return x < y ? CSTR_LESS_THAN : CSTR_GREATER_THAN;
  }
}
