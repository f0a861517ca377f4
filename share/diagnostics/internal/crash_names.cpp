#include "share/diagnostics/internal/crash_names.h"

#include <utility>

namespace {

struct ExceptionRow {
  DWORD code;
  std::string_view name;
};
constexpr ExceptionRow kExceptions[] = {
    {0x40010005, "a Control-C"},
    {0x40010008, "a Control-Break"},
    {0x80000002, "a Datatype Misalignment"},
    {0x80000003, "a Breakpoint"},
    {0xC0000005, "an Access Violation"},
    {0xC0000006, "an In Page Error"},
    {0xC0000017, "a No Memory"},
    {0xC000001D, "an Illegal Instruction"},
    {0xC0000025, "a Noncontinuable Exception"},
    {0xC0000026, "an Invalid Disposition"},
    {0xC000008C, "a Array Bounds Exceeded"},
    {0xC000008D, "a Float Denormal Operand"},
    {0xC000008E, "a Float Divide by Zero"},
    {0xC000008F, "a Float Inexact Result"},
    {0xC0000090, "a Float Invalid Operation"},
    {0xC0000091, "a Float Overflow"},
    {0xC0000092, "a Float Stack Check"},
    {0xC0000093, "a Float Underflow"},
    {0xC0000094, "an Integer Divide by Zero"},
    {0xC0000095, "an Integer Overflow"},
    {0xC0000096, "a Privileged Instruction"},
    {0xC00000FD, "a Stack Overflow"},
    {0xC0000142, "a DLL Initialization Failed"},
    {0xE06D7363, "a Microsoft C++ Exception"},
};

constexpr std::string_view kMonths[] = {"",    "Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                        "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

constexpr std::pair<int, std::string_view> kLanguages[] = {
    {0, "Neutral"},
    {54, "Afrikaans"},
    {28, "Albanian"},
    {1, "Arabic"},
    {45, "Basque"},
    {2, "Bulgarian"},
    {35, "Byelorussian"},
    {3, "Catalan"},
    {4, "Chinese"},
    {5, "Czech"},
    {6, "Danish"},
    {19, "Dutch"},
    {9, "English"},
    {37, "Estonian"},
    {56, "Faeroese"},
    {41, "Farsi"},
    {11, "Finnish"},
    {12, "French"},
    {7, "German"},
    {8, "Greek"},
    {13, "Hebrew"},
    {14, "Hungarian"},
    {15, "Icelandic"},
    {33, "Indonesian"},
    {16, "Italian"},
    {17, "Japanese"},
    {44, "Kampuchean"},
    {18, "Korean"},
    {43, "Laotian"},
    {38, "Latvian"},
    {39, "Lithuanian"},
    {47, "Macedonian (FYROM)"},
    {58, "Maltese"},
    {40, "Maori"},
    {20, "Norwegian"},
    {21, "Polish"},
    {22, "Portuguese"},
    {23, "Rhaeto-Romanic"},
    {24, "Romanian"},
    {25, "Russian"},
    {59, "Sami"},
    {60, "Scots Gaelic"},
    {26, "Serbo-Croatian*"},
    {27, "Slovak"},
    {36, "Slovenian"},
    {46, "Sorbian"},
    {10, "Spanish"},
    {48, "Sutu"},
    {29, "Swedish"},
    {30, "Thai"},
    {49, "Tsonga"},
    {50, "Tswana"},
    {31, "Turkish"},
    {34, "Ukrainian"},
    {32, "Urdu"},
    {51, "Venda"},
    {42, "Vietnamese"},
    {52, "Xhosa"},
    {53, "Zulu"},
};

// What a row asks of the system beside its version.
enum class Further { kNothing, kWorkstation64, kWorkstation, kServer, kNotR2, kR2 };

struct SystemRow {
  DWORD major, minor;
  Further further;
  std::string_view name;
};
constexpr SystemRow kSystems[] = {
    {5, 0, Further::kNothing, "Windows 2000"},
    {5, 1, Further::kNothing, "Windows XP"},
    {5, 2, Further::kWorkstation64, "Windows XP Professional x64 Edition"},
    {5, 2, Further::kNotR2, "Windows 2003 Server"},
    {5, 2, Further::kR2, "Windows 2003 Server R2"},
    {6, 0, Further::kWorkstation, "Windows Vista"},
    {6, 0, Further::kServer, "Windows 2008 Server"},
    {6, 1, Further::kWorkstation, "Windows 7"},
    {6, 1, Further::kServer, "Windows 2008 Server R2"},
    {6, 2, Further::kWorkstation, "Windows 8"},
    {6, 2, Further::kServer, "Windows 2012 Server"},
};

constexpr DWORD kPlatformCE = 3;
constexpr DWORD kPlatformNT = 2;
constexpr DWORD kArchitecture64 = 9;

bool Fits(Further further, const SystemVersion& version) {
  switch (further) {
    case Further::kNothing: return true;
    case Further::kWorkstation64: return version.isWorkstation && version.architecture == kArchitecture64;
    case Further::kWorkstation: return version.isWorkstation;
    case Further::kServer: return !version.isWorkstation;
    case Further::kNotR2: return !version.isServerR2;
    case Further::kR2: return version.isServerR2;
  }
  return false;
}

}  // namespace

std::string_view ExceptionName(DWORD code) {
  for (const ExceptionRow& row : kExceptions)
    if (row.code == code) return row.name;
  return "an Unknown exception type";
}

std::string_view MonthName(int month) { return month >= 0 && month <= 12 ? kMonths[month] : kMonths[0]; }

std::string_view LanguageName(int language) {
  for (const auto& [number, name] : kLanguages)
    if (number == language) return name;
  return "An Unknown Language";
}

std::string SystemName(const SystemVersion& version) {
  if (!version.name.empty()) return version.name;
  std::string_view name;
  if (version.platform == kPlatformCE) name = "Windows CE";
  for (const SystemRow& row : kSystems) {
    const bool same = version.platform == kPlatformNT && row.major == version.major && row.minor == version.minor;
    if (same && name.empty() && Fits(row.further, version)) name = row.name;
  }
  return name.empty() ? "Could not detect Windows version" : std::string(name) + ' ' + version.servicePack;
}
