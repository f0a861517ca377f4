// CString, the wide text of the whole product: UTF-16, counted, shared on copy.
//
// A CString is one pointer wide. A copy shares the text of its source and counts its users atomically, so that copies
// may be made, read and dropped on any thread; a change first makes the text the changer's own. One CString object
// itself is changed by one thread at a time. An empty one allocates nothing. Positions and lengths are UTF-16 units;
// a text may hold NUL units, though the operations that take a LPCTSTR end at the first. A null LPCTSTR counts as
// empty. Only running out of memory (std::bad_alloc) and a length above 0x3FFFFFFF (std::length_error) throw.
#pragma once

#include <atomic>
#include <cstring>
#include <initializer_list>
#include <string>
#include <string_view>
#include <type_traits>

#include "platform/types.h"

// One argument of CString::Format, with the type it was given as. Made by the call itself.
struct FormatArgument {
  enum class Kind { kSigned, kUnsigned, kReal, kText, kNarrow, kCharacter, kPointer };

  template <class T>
  requires std::is_integral_v<T> FormatArgument(T value)
      : kind(std::is_signed_v<T> ? Kind::kSigned : Kind::kUnsigned), bytes(sizeof(T)), integer(ULONGLONG(value)) {}
  template <class T>
  requires std::is_enum_v<T> FormatArgument(T value) : FormatArgument(static_cast<std::underlying_type_t<T>>(value)) {}
  FormatArgument(TCHAR value) : kind(Kind::kCharacter), bytes(sizeof(TCHAR)), integer(value) {}
  FormatArgument(char value) : kind(Kind::kCharacter), bytes(1), integer(BYTE(value)) {}
  FormatArgument(double value) : kind(Kind::kReal), real(value) {}
  FormatArgument(float value) : kind(Kind::kReal), real(value) {}
  FormatArgument(long double value) : kind(Kind::kReal), real(double(value)) {}
  FormatArgument(LPCTSTR value) : kind(Kind::kText), text(value ? TextView(value) : _T("(null)")) {}
  FormatArgument(TextView value) : kind(Kind::kText), text(value) {}
  FormatArgument(LPCSTR value) : kind(Kind::kNarrow), narrow(value ? std::string_view(value) : "(null)") {}
  FormatArgument(const void* value) : kind(Kind::kPointer), integer(reinterpret_cast<std::uintptr_t>(value)) {}

  Kind kind;
  int bytes = 8;
  ULONGLONG integer = 0;
  double real = 0;
  TextView text = {};
  std::string_view narrow = {};
};

class CArchive;

class KVSHARE_API CString {
 public:
  // Construction. Narrow text is UTF-8; a byte that is none becomes U+FFFD.
  CString() noexcept : data_(Nil()) {}
  CString(const CString& other) noexcept : data_(other.data_) { Share(); }
  CString(CString&& other) noexcept : data_(other.data_) { other.data_ = Nil(); }
  CString(LPCTSTR text);
  CString(LPCTSTR text, int length);
  CString(LPCSTR text);
  explicit CString(TextView text);
  explicit CString(TCHAR character, int repeat = 1);
  ~CString() { Release(); }

  CString& operator=(const CString& other) noexcept;
  CString& operator=(CString&& other) noexcept;
  CString& operator=(LPCTSTR text);
  CString& operator=(LPCSTR text);
  CString& operator=(TCHAR character);

  // Reading. GetAt and operator[] take a position in the closed interval 0 to GetLength(); at GetLength() stands a NUL.
  // A position outside gives NUL.
  int GetLength() const noexcept { return Head()->length; }
  bool IsEmpty() const noexcept { return Head()->length == 0; }
  TCHAR GetAt(int position) const noexcept {
    return position >= 0 && position <= GetLength() ? data_[position] : TCHAR(0);
  }
  TCHAR operator[](int position) const noexcept { return GetAt(position); }
  LPCTSTR GetString() const noexcept { return data_; }
  operator LPCTSTR() const noexcept { return data_; }
  TextView View() const noexcept { return {data_, std::size_t(GetLength())}; }

  // Comparison by UTF-16 units: negative, 0 or positive. CompareNoCase folds each character by Unicode's simple case
  // folding first, the same in every locale.
  int Compare(LPCTSTR other) const noexcept;
  int CompareNoCase(LPCTSTR other) const noexcept;

  // Cutting. Negative positions and counts count as 0, what reaches past the end is left out.
  CString Mid(int first) const;
  CString Mid(int first, int count) const;
  CString Left(int count) const;
  CString Right(int count) const;
  CString SpanIncluding(LPCTSTR set) const;
  CString SpanExcluding(LPCTSTR set) const;
  // Gives the next piece between characters of the set, from start on, and moves start behind it; start becomes -1 and
  // the piece is empty when there is none left. A start of -1 stays.
  CString Tokenize(LPCTSTR separators, int& start) const;

  // Searching: a position, or -1. A start outside the text finds nothing.
  int Find(TCHAR character, int start = 0) const noexcept;
  int Find(LPCTSTR text, int start = 0) const noexcept;
  int ReverseFind(TCHAR character) const noexcept;
  int FindOneOf(LPCTSTR set) const noexcept;

  // Changing. Replace and Remove give the number of places changed, Insert and Delete the new length. Replace and
  // Remove distinguish case. Replacing by a null or empty text removes.
  void Empty() noexcept;
  void SetAt(int position, TCHAR character);
  void SetString(LPCTSTR text, int length);
  void Append(LPCTSTR text, int length);
  void AppendChar(TCHAR character) { Append(&character, 1); }
  CString& operator+=(const CString& text);
  CString& operator+=(LPCTSTR text);
  CString& operator+=(LPCSTR text);
  CString& operator+=(TCHAR character);
  CString& MakeUpper();
  CString& MakeLower();
  CString& MakeReverse();
  CString& Trim();
  CString& Trim(TCHAR character);
  CString& Trim(LPCTSTR set);
  CString& TrimLeft();
  CString& TrimLeft(TCHAR character);
  CString& TrimLeft(LPCTSTR set);
  CString& TrimRight();
  CString& TrimRight(TCHAR character);
  CString& TrimRight(LPCTSTR set);
  int Replace(TCHAR from, TCHAR to);
  int Replace(LPCTSTR from, LPCTSTR to);
  int Remove(TCHAR character);
  int Insert(int position, TCHAR character);
  int Insert(int position, LPCTSTR text);
  int Delete(int position, int count = 1);

  // Buffers. GetBuffer gives room for at least length units and a terminator, with the present text in it;
  // ReleaseBuffer ends the writing with the new length, at the first NUL for -1. GetBufferSetLength sets the length
  // at once; units beyond the old text are undefined until written. The buffer belongs to the CString.
  LPTSTR GetBuffer(int length = 0);
  LPTSTR GetBufferSetLength(int length);
  void ReleaseBuffer(int length = -1);
  void Preallocate(int length);
  void FreeExtra();

  // Text from a format in the manner of printf: flags, width, precision, "*", and d i u o x X c s S f F e E g G a A p
  // %. The arguments are typed: length modifiers are read and ignored, an integer has the width it was given with, at
  // least that of an int, and its conversion decides whether it is signed. %s takes wide and narrow text alike (widths
  // and precisions count UTF-16 units). A conversion that does not fit its argument, which is used up, or has none, is
  // left standing as text; reals always have the decimal point.
  template <class... Arguments>
  void Format(LPCTSTR format, const Arguments&... arguments) {
    CString text;
    text.AppendFormat(format, arguments...);
    *this = std::move(text);
  }
  template <class... Arguments>
  void AppendFormat(LPCTSTR format, const Arguments&... arguments) {
    AppendFormatted(format, {ToArgument(arguments)...});
  }
  // The same with a format from the resource library; nothing changes if it has no such text.
  template <class... Arguments>
  void Format(UINT id, const Arguments&... arguments) {
    CString format;
    if (format.LoadString(id)) Format(format.GetString(), arguments...);
  }

  // Loads string number id of the given module, or of the first resource library in the application's chain that has
  // it. False, with the text emptied, if there is none.
  bool LoadString(UINT id);
  bool LoadString(HINSTANCE module, UINT id);

  friend CString operator+(const CString& a, const CString& b) { return Concatenate(a.View(), b.View()); }
  friend CString operator+(const CString& a, LPCTSTR b) { return Concatenate(a.View(), ViewOf(b)); }
  friend CString operator+(LPCTSTR a, const CString& b) { return Concatenate(ViewOf(a), b.View()); }
  friend CString operator+(const CString& a, TCHAR b) { return Concatenate(a.View(), {&b, 1}); }
  friend CString operator+(TCHAR a, const CString& b) { return Concatenate({&a, 1}, b.View()); }
  friend bool operator==(const CString& a, const CString& b) noexcept { return a.View() == b.View(); }
  friend bool operator==(const CString& a, LPCTSTR b) noexcept { return a.View() == ViewOf(b); }
  friend auto operator<=>(const CString& a, const CString& b) noexcept { return a.View() <=> b.View(); }
  friend auto operator<=>(const CString& a, LPCTSTR b) noexcept { return a.View() <=> ViewOf(b); }

 private:
  friend class CArchive;  // reads texts as they lie in its buffer
  template <class>
  friend class CountedBatch;

  // Stands ahead of the units, which end with a NUL. users is -1 for the one empty text that all share.
  struct Header {
    std::atomic<int> users;
    int length;
    int capacity;  // the block's size follows from it
  };

  static TCHAR* Nil() noexcept;
  static std::size_t BlockBytes(int capacity) noexcept;
  static TCHAR* Allocate(int capacity);
  static TextView ViewOf(LPCTSTR text) noexcept { return text ? TextView(text) : _T(""); }
  static CString Concatenate(TextView a, TextView b);
  static FormatArgument ToArgument(const CString& value) { return FormatArgument(value.View()); }
  template <class T>
  static FormatArgument ToArgument(const T& value) {
    return FormatArgument(value);
  }

  Header* Head() const noexcept { return reinterpret_cast<Header*>(data_) - 1; }
  void Share() noexcept {
    if (Head()->users.load(std::memory_order_relaxed) > 0) Head()->users.fetch_add(1, std::memory_order_relaxed);
  }
  void Release() noexcept;
  void AddUsers(int count) noexcept {
    if (Head()->users.load(std::memory_order_relaxed) > 0) Head()->users.fetch_add(count, std::memory_order_acq_rel);
  }
  static CString Adopt(const CString& counted) noexcept {
    CString copy;
    copy.data_ = counted.data_;
    return copy;
  }
  void Assign(TextView text) { AssignUnits(text.data(), text.size()); }
  // As they lie in memory, which need not be where units may lie.
  void AssignUnits(const void* units, std::size_t count);
  void AssignUtf8(std::string_view text);
  void SetLength(int length) noexcept;
  TCHAR* Own(int capacity);
  void Cut(int first, int count);
  void AppendFormatted(LPCTSTR format, std::initializer_list<FormatArgument> arguments);

  TCHAR* data_;
};

static_assert(sizeof(CString) == sizeof(void*), "a CString is one pointer wide");

// The border between the product's text and UTF-8. Bytes that are no UTF-8 become U+FFFD, a lone surrogate becomes the
// bytes of U+FFFD: neither fails.
KVSHARE_API CString FromUtf8(std::string_view text);
KVSHARE_API std::string ToUtf8(TextView text);
inline std::string ToUtf8(const CString& text) { return ToUtf8(text.View()); }
// Appends to what stands in out.
KVSHARE_API void AppendUtf8(std::string& out, TextView text);
