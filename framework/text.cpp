// CString. A small header precedes the units of a text in one block; all empty texts share one static block.
#include "framework/text.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <new>
#include <stdexcept>

#include "framework/block_pool.h"
#include "platform/text.h"

namespace {

constexpr int kMaximumLength = 0x3FFFFFFF;

bool IsSpace(TCHAR unit) {
  return unit == ' ' || (unit >= 9 && unit <= 13) || unit == 0x85 || unit == 0xA0 || unit == 0x1680 ||
         (unit >= 0x2000 && unit <= 0x200A) || unit == 0x2028 || unit == 0x2029 || unit == 0x202F || unit == 0x205F ||
         unit == 0x3000;
}

int CheckedLength(std::size_t length) {
  if (length > std::size_t(kMaximumLength)) throw std::length_error("CString: text too long");
  return int(length);
}

auto InSet(LPCTSTR set) {
  const TextView view = set ? TextView(set) : TextView();
  return [view](TCHAR unit) { return view.find(unit) != view.npos; };
}

// The number of leading or trailing units for which the test is true.
template <class Test>
int CountFront(TextView text, Test test) {
  return int(std::find_if_not(text.begin(), text.end(), test) - text.begin());
}
template <class Test>
int CountBack(TextView text, Test test) {
  return int(std::find_if_not(text.rbegin(), text.rend(), test) - text.rbegin());
}

// Copies the leading ASCII bytes, eight at a time as long as possible. Returns their number.
int WidenAscii(std::string_view text, TCHAR* units) {
  constexpr ULONGLONG kHighBits = 0x8080808080808080;
  std::size_t at = 0;
  for (ULONGLONG eight; text.size() - at >= sizeof eight; at += sizeof eight) {
    std::memcpy(&eight, text.data() + at, sizeof eight);
    if (eight & kHighBits) break;
    for (std::size_t i = 0; i < sizeof eight; ++i) units[at + i] = static_cast<BYTE>(text[at + i]);
  }
  for (; at < text.size() && static_cast<signed char>(text[at]) >= 0; ++at) units[at] = static_cast<TCHAR>(text[at]);
  return int(at);
}

}  // namespace

// ---- storage

TCHAR* CString::Nil() noexcept {
  struct Block {
    Header head;
    TCHAR end[2];
  };
  static Block nil = {{-1, 0, 0}, {0, 0}};
  return nil.end;
}

std::size_t CString::BlockBytes(int capacity) noexcept {
  return sizeof(Header) + (std::size_t(capacity) + 1) * sizeof(TCHAR);
}

TCHAR* CString::Allocate(int capacity) {
  void* block = BlockPool::Allocate(BlockBytes(capacity));
  auto* head = new (block) Header{1, 0, capacity};
  auto* units = reinterpret_cast<TCHAR*>(head + 1);
  units[0] = 0;
  return units;
}

void CString::Release() noexcept {
  if (data_ == Nil()) return;
  Header* head = Head();
  // The last user needs no atomic decrement: no other thread can reach the text.
  if (head->users.load(std::memory_order_acquire) == 1 || head->users.fetch_sub(1, std::memory_order_acq_rel) == 1) {
    BlockPool::Free(head, BlockBytes(head->capacity));
  }
}

void CString::SetLength(int length) noexcept {
  if (data_ == Nil()) return;
  Head()->length = length;
  data_[length] = 0;
}

// Gives this object its own text with room for `capacity` units; keeps the content.
TCHAR* CString::Own(int capacity) {
  if (capacity < 0 || capacity > kMaximumLength) throw std::length_error("CString: text too long");
  Header* head = Head();
  const bool own = head->users.load(std::memory_order_acquire) == 1;
  if (own && head->capacity >= capacity) return data_;
  const int length = head->length;
  const int grown =
      own ? std::max<LONGLONG>(capacity, std::min<LONGLONG>(LONGLONG(head->capacity) * 3 / 2, kMaximumLength))
          : std::max(capacity, length);
  TCHAR* fresh = Allocate(grown);
  std::memcpy(fresh, data_, std::size_t(length) * sizeof(TCHAR));
  Release();
  data_ = fresh;
  SetLength(length);
  return data_;
}

void CString::AssignUnits(const void* units, std::size_t count) {
  if (count == 0) return Empty();
  const int length = CheckedLength(count);
  const Header* head = Head();
  if (head->users.load(std::memory_order_acquire) == 1 && head->capacity >= length) {
    std::memmove(data_, units, count * sizeof(TCHAR));  // the units may be part of this text
  } else {
    TCHAR* fresh = Allocate(length);
    std::memcpy(fresh, units, count * sizeof(TCHAR));
    Release();
    data_ = fresh;
  }
  SetLength(length);
}

void CString::AssignUtf8(std::string_view text) {
  if (text.empty()) return Empty();
  const int bytes = CheckedLength(text.size());
  TCHAR* const units = Allocate(bytes);  // UTF-8 text never has more units than bytes
  const int ascii = WidenAscii(text, units);
  int length = ascii;
  if (ascii < bytes)
    length += MultiByteToWideChar(CP_UTF8, 0, text.data() + ascii, bytes - ascii, units + ascii, bytes - ascii);
  Release();  // only now, because the bytes may be part of this text
  data_ = units;
  SetLength(length);
}

// ---- construction

CString::CString(LPCTSTR text) : data_(Nil()) { Assign(ViewOf(text)); }
CString::CString(LPCTSTR text, int length) : data_(Nil()) { SetString(text, length); }
CString::CString(LPCSTR text) : data_(Nil()) {
  if (text) AssignUtf8(text);
}
CString::CString(TextView text) : data_(Nil()) { Assign(text); }
CString::CString(TCHAR character, int repeat) : data_(Nil()) {
  if (repeat <= 0) return;
  std::fill_n(Own(repeat), repeat, character);
  SetLength(repeat);
}

CString& CString::operator=(const CString& other) noexcept {
  if (data_ != other.data_) {
    Release();
    data_ = other.data_;
    Share();
  }
  return *this;
}
CString& CString::operator=(CString&& other) noexcept {
  std::swap(data_, other.data_);
  return *this;
}
CString& CString::operator=(LPCTSTR text) {
  Assign(ViewOf(text));
  return *this;
}
CString& CString::operator=(LPCSTR text) {
  AssignUtf8(text ? text : "");
  return *this;
}
CString& CString::operator=(TCHAR character) {
  Assign({&character, 1});
  return *this;
}

CString CString::Concatenate(TextView a, TextView b) {
  CString sum;
  const int length = CheckedLength(a.size() + b.size());
  if (length == 0) return sum;
  TCHAR* units = sum.Own(length);
  std::copy(b.begin(), b.end(), std::copy(a.begin(), a.end(), units));
  sum.SetLength(length);
  return sum;
}

// ---- comparison

int CString::Compare(LPCTSTR other) const noexcept {
  const int order = TextView(data_).compare(ViewOf(other));
  return order < 0 ? -1 : order > 0;
}
int CString::CompareNoCase(LPCTSTR other) const noexcept {
  return CompareStringOrdinal(data_, -1, other ? other : _T(""), -1, TRUE) - CSTR_EQUAL;
}

// ---- cutting

CString CString::Mid(int first) const { return Mid(first, GetLength()); }
CString CString::Mid(int first, int count) const {
  const int length = GetLength();
  first = std::clamp(first, 0, length);
  count = std::clamp(count, 0, length - first);
  return count == length ? *this : CString(View().substr(std::size_t(first), std::size_t(count)));
}
CString CString::Left(int count) const { return Mid(0, count); }
CString CString::Right(int count) const {
  count = std::clamp(count, 0, GetLength());
  return Mid(GetLength() - count, count);
}
CString CString::SpanIncluding(LPCTSTR set) const { return Left(CountFront(View(), InSet(set))); }
CString CString::SpanExcluding(LPCTSTR set) const { return Left(CountFront(View(), std::not_fn(InSet(set)))); }

CString CString::Tokenize(LPCTSTR separators, int& start) const {
  if (start >= 0 && start < GetLength()) {
    const int first = start + CountFront(View().substr(std::size_t(start)), InSet(separators));
    if (first < GetLength()) {
      const int count = CountFront(View().substr(std::size_t(first)), std::not_fn(InSet(separators)));
      start = first + count + 1;
      return Mid(first, count);
    }
  }
  start = -1;
  return CString();
}

// ---- searching

int CString::Find(TCHAR character, int start) const noexcept {
  if (start < 0 || start >= GetLength()) return -1;
  const std::size_t at = View().find(character, std::size_t(start));
  return at == TextView::npos ? -1 : int(at);
}
int CString::Find(LPCTSTR text, int start) const noexcept {
  if (!text || start < 0 || start > GetLength()) return -1;
  const std::size_t at = View().find(text, std::size_t(start));
  return at == TextView::npos ? -1 : int(at);
}
int CString::ReverseFind(TCHAR character) const noexcept {
  const std::size_t at = View().rfind(character);
  return at == TextView::npos ? -1 : int(at);
}
int CString::FindOneOf(LPCTSTR set) const noexcept {
  const std::size_t at = View().find_first_of(ViewOf(set));
  return at == TextView::npos ? -1 : int(at);
}

// ---- changing

void CString::Empty() noexcept {
  Release();
  data_ = Nil();
}
void CString::SetAt(int position, TCHAR character) {
  if (position >= 0 && position < GetLength()) Own(GetLength())[position] = character;
}
void CString::SetString(LPCTSTR text, int length) {
  Assign(text && length > 0 ? TextView(text, std::size_t(length)) : TextView());
}
void CString::Append(LPCTSTR text, int count) {
  if (!text || count <= 0) return;
  const int length = GetLength();
  const int sum = CheckedLength(std::size_t(length) + std::size_t(count));
  const CString source = text >= data_ && text <= data_ + length ? *this : CString();  // `text` may be a part of it
  std::memcpy(Own(sum) + length, text, std::size_t(count) * sizeof(TCHAR));
  SetLength(sum);
}
CString& CString::operator+=(const CString& text) {
  Append(text, text.GetLength());
  return *this;
}
CString& CString::operator+=(LPCTSTR text) {
  Append(text, CheckedLength(ViewOf(text).size()));
  return *this;
}
CString& CString::operator+=(LPCSTR text) { return *this += CString(text); }
CString& CString::operator+=(TCHAR character) {
  Append(&character, 1);
  return *this;
}

CString& CString::MakeUpper() {
  if (IsEmpty()) return *this;
  CharUpperBuffW(Own(GetLength()), DWORD(GetLength()));
  return *this;
}
CString& CString::MakeLower() {
  if (IsEmpty()) return *this;
  CharLowerBuffW(Own(GetLength()), DWORD(GetLength()));
  return *this;
}
CString& CString::MakeReverse() {
  if (IsEmpty()) return *this;
  TCHAR* units = Own(GetLength());
  std::reverse(units, units + GetLength());
  return *this;
}

void CString::Cut(int first, int count) {
  if (count <= 0) return;
  if (count == GetLength()) return Empty();
  const int rest = GetLength() - first - count;
  TCHAR* units = Own(GetLength());
  std::memmove(units + first, units + first + count, std::size_t(rest) * sizeof(TCHAR));
  SetLength(first + rest);
}

CString& CString::TrimLeft() {
  Cut(0, CountFront(View(), IsSpace));
  return *this;
}
CString& CString::TrimLeft(TCHAR character) {
  Cut(0, CountFront(View(), [=](TCHAR unit) { return unit == character; }));
  return *this;
}
CString& CString::TrimLeft(LPCTSTR set) {
  Cut(0, CountFront(View(), InSet(set)));
  return *this;
}
CString& CString::TrimRight() {
  const int count = CountBack(View(), IsSpace);
  Cut(GetLength() - count, count);
  return *this;
}
CString& CString::TrimRight(TCHAR character) {
  const int count = CountBack(View(), [=](TCHAR unit) { return unit == character; });
  Cut(GetLength() - count, count);
  return *this;
}
CString& CString::TrimRight(LPCTSTR set) {
  const int count = CountBack(View(), InSet(set));
  Cut(GetLength() - count, count);
  return *this;
}
CString& CString::Trim() { return TrimRight().TrimLeft(); }
CString& CString::Trim(TCHAR character) { return TrimRight(character).TrimLeft(character); }
CString& CString::Trim(LPCTSTR set) { return TrimRight(set).TrimLeft(set); }

int CString::Replace(TCHAR from, TCHAR to) {
  const TextView text = View();
  const int count = int(std::count(text.begin(), text.end(), from));
  if (count == 0 || from == to) return count;
  TCHAR* units = Own(GetLength());
  std::replace(units, units + GetLength(), from, to);
  return count;
}
int CString::Replace(LPCTSTR from, LPCTSTR to) {
  const TextView what = ViewOf(from);
  if (what.empty()) return 0;
  const CString source = *this;
  const Text with(ViewOf(to));  // a copy, because it may be part of this text
  int count = 0;
  Text result;
  std::size_t start = 0;
  for (std::size_t at; (at = source.View().find(what, start)) != TextView::npos; start = at + what.size()) {
    result.append(source.View(), start, at - start).append(with);
    ++count;
  }
  if (count == 0) return 0;
  result.append(source.View(), start);
  Assign(result);
  return count;
}
int CString::Remove(TCHAR character) {
  const TextView text = View();
  const int count = int(std::count(text.begin(), text.end(), character));
  if (count == 0) return 0;
  TCHAR* units = Own(GetLength());
  SetLength(int(std::remove(units, units + GetLength(), character) - units));
  return count;
}
int CString::Insert(int position, TCHAR character) {
  const TCHAR text[] = {character, 0};
  return Insert(position, text);
}
int CString::Insert(int position, LPCTSTR text) {
  position = std::clamp(position, 0, GetLength());
  *this = Concatenate((Left(position) + text).View(), View().substr(std::size_t(position)));
  return GetLength();
}
int CString::Delete(int position, int count) {
  position = std::clamp(position, 0, GetLength());
  Cut(position, std::clamp(count, 0, GetLength() - position));
  return GetLength();
}

// ---- buffers

LPTSTR CString::GetBuffer(int length) { return Own(std::max(length, GetLength())); }
LPTSTR CString::GetBufferSetLength(int length) {
  TCHAR* units = Own(std::max(length, 1));
  SetLength(std::max(length, 0));
  return units;
}
void CString::ReleaseBuffer(int length) {
  const int capacity = Head()->capacity;
  // Without a NUL in the buffer the text ends at the buffer's end.
  if (length < 0) length = int(std::find(data_, data_ + capacity, TCHAR(0)) - data_);
  SetLength(std::min(length, capacity));
}
void CString::Preallocate(int length) { Own(std::max(length, GetLength())); }
void CString::FreeExtra() {
  if (Head()->capacity > GetLength()) *this = CString(View());
}

// ---- the border to UTF-8

CString FromUtf8(std::string_view text) {
  CString result;
  if (text.empty()) return result;
  const int bytes = CheckedLength(text.size());
  TCHAR* units = result.GetBufferSetLength(bytes);
  const int ascii = WidenAscii(text, units);
  if (ascii == bytes) return result;
  CString exact;  // non-ASCII text has fewer units than bytes
  const int rest = MultiByteToWideChar(CP_UTF8, 0, text.data() + ascii, bytes - ascii, nullptr, 0);
  TCHAR* exact_units = exact.GetBufferSetLength(ascii + rest);
  std::copy_n(units, ascii, exact_units);
  MultiByteToWideChar(CP_UTF8, 0, text.data() + ascii, bytes - ascii, exact_units + ascii, rest);
  return exact;
}

void AppendUtf8(std::string& out, TextView text) {
  std::size_t ascii = 0;
  const std::size_t start = out.size();
  out.resize(start + text.size());
  while (ascii < text.size() && text[ascii] < 0x80) {
    out[start + ascii] = static_cast<char>(text[ascii]);
    ++ascii;
  }
  if (ascii == text.size()) return;
  const TextView rest = text.substr(ascii);
  const int units = CheckedLength(rest.size());
  const int bytes = WideCharToMultiByte(CP_UTF8, 0, rest.data(), units, nullptr, 0, nullptr, nullptr);
  if (bytes == 0) throw std::length_error("ToUtf8: text too long");
  out.resize(start + ascii + std::size_t(bytes));
  WideCharToMultiByte(CP_UTF8, 0, rest.data(), units, out.data() + start + ascii, bytes, nullptr, nullptr);
}

std::string ToUtf8(TextView text) {
  std::string out;
  AppendUtf8(out, text);
  return out;
}
