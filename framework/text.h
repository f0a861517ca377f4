// CString: the text type of the whole product. UTF-16, reference-counted, shared on copy.
//
// A CString has the size of one pointer. A copy shares the text of its source and counts its users atomically, so any
// thread may make, read and drop copies; a change first gives the object its own text. One CString object must be
// changed by one thread at a time. An empty text allocates nothing. Positions and lengths are in UTF-16 units. A text
// may contain NUL units, but operations with an LPCTSTR parameter stop at the first NUL. A null LPCTSTR counts as
// empty. Calls raise only std::bad_alloc, and std::length_error for a length above 0x3FFFFFFF.
#pragma once

#include <atomic>
#include <cstring>
#include <initializer_list>
#include <string>
#include <string_view>
#include <type_traits>

#include "platform/types.h"

// One argument of CString::Format with its type. Created by the call itself.
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
  // Construction. Narrow text is UTF-8; invalid bytes become U+FFFD. A negative length or repeat count gives an empty
  // text.
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

  // Reading. GetAt and operator[] accept positions from 0 to GetLength(), both included; at GetLength() they return
  // NUL, as they do for a position outside. GetString and View are valid until the text changes.
  int GetLength() const noexcept { return Head()->length; }
  bool IsEmpty() const noexcept { return Head()->length == 0; }
  TCHAR GetAt(int position) const noexcept {
    return position >= 0 && position <= GetLength() ? data_[position] : TCHAR(0);
  }
  TCHAR operator[](int position) const noexcept { return GetAt(position); }
  LPCTSTR GetString() const noexcept { return data_; }
  operator LPCTSTR() const noexcept { return data_; }
  TextView View() const noexcept { return {data_, std::size_t(GetLength())}; }

  // Comparison by UTF-16 units: -1, 0 or 1. CompareNoCase compares the upper-case forms, as the platform compares names
  // (platform/text.h), the same in every locale.
  int Compare(LPCTSTR other) const noexcept;
  int CompareNoCase(LPCTSTR other) const noexcept;

  // Parts of the text. Negative positions and counts count as 0; a count beyond the end is cut off.
  CString Mid(int first) const;
  CString Mid(int first, int count) const;
  CString Left(int count) const;
  CString Right(int count) const;
  CString SpanIncluding(LPCTSTR set) const;
  CString SpanExcluding(LPCTSTR set) const;
  // Returns the next non-empty piece between separators, from `start` on, and moves `start` after it. Without another
  // piece the result is empty and `start` becomes -1. A start of -1 stays -1.
  //
  //   int at = 0;
  //   for (CString piece = text.Tokenize(_T(","), at); at != -1; piece = text.Tokenize(_T(","), at)) Use(piece);
  CString Tokenize(LPCTSTR separators, int& start) const;

  // Searching: a position, or -1. A start outside the text finds nothing.
  int Find(TCHAR character, int start = 0) const noexcept;
  int Find(LPCTSTR text, int start = 0) const noexcept;
  int ReverseFind(TCHAR character) const noexcept;
  int FindOneOf(LPCTSTR set) const noexcept;

  // Changing. Replace and Remove return the number of replaced places, and they distinguish case; a null or empty new
  // text removes. Insert and Delete return the new length. SetAt ignores a position outside. Arguments may be parts of
  // the text itself.
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

  // Direct access. GetBuffer returns a buffer for at least `length` units and a NUL, with the current text in it. After
  // writing, call ReleaseBuffer with the new length, or with -1 to take the text up to the first NUL.
  // GetBufferSetLength sets the length immediately; units after the old text are undefined until written. The buffer
  // stays the CString's and is valid until its next change.
  LPTSTR GetBuffer(int length = 0);
  LPTSTR GetBufferSetLength(int length);
  void ReleaseBuffer(int length = -1);
  void Preallocate(int length);
  void FreeExtra();

  // Text from a printf format: flags, width, precision, "*", and the letters d i u o x X c C s S f F e E g G a A p %.
  // The arguments have types, so length modifiers are ignored: an integer keeps its own width, at least that of an int,
  // and the letter decides whether it is signed. %s and %S accept wide and narrow text; widths and precisions count
  // UTF-16 units. A conversion without argument, or with an argument of the wrong kind (which is consumed), stays in
  // the result as it is written. Reals always have a decimal point.
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
  // The same with format string `id` of the language library; nothing changes if there is no such string.
  template <class... Arguments>
  void Format(UINT id, const Arguments&... arguments) {
    CString format;
    if (format.LoadString(id)) Format(format.GetString(), arguments...);
  }

  // Loads string number `id`, from the given module or from the registered resource modules (framework/resources.h). If
  // there is no such string, the text becomes empty and the result is false.
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
  friend class CArchive;  // copies texts directly from its buffer
  template <class>
  friend class CountedBatch;

  // Precedes the units, which end with a NUL. users is -1 for the one empty text that all empty objects share.
  struct Header {
    std::atomic<int> users;
    int length;
    int capacity;  // determines the block's size
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
  // The units may have any alignment.
  void AssignUnits(const void* units, std::size_t count);
  void AssignUtf8(std::string_view text);
  void SetLength(int length) noexcept;
  TCHAR* Own(int capacity);
  void Cut(int first, int count);
  void AppendFormatted(LPCTSTR format, std::initializer_list<FormatArgument> arguments);

  TCHAR* data_;
};

static_assert(sizeof(CString) == sizeof(void*), "a CString is one pointer wide");

// Conversion between CString and UTF-8. Invalid bytes become U+FFFD; half a surrogate pair becomes the bytes of U+FFFD.
// Neither call fails because of its input.
KVSHARE_API CString FromUtf8(std::string_view text);
KVSHARE_API std::string ToUtf8(TextView text);
inline std::string ToUtf8(const CString& text) { return ToUtf8(text.View()); }
// Empty for null.
inline std::string ToUtf8(LPCTSTR text) { return text ? ToUtf8(TextView(text)) : std::string(); }
// Appends to `out`.
KVSHARE_API void AppendUtf8(std::string& out, TextView text);
