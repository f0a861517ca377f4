// The ".reg" form: exact bytes, the way back, and what is refused.
#include "share/settings/registry_text.h"

#include "framework/text.h"
#include "tests/registry_calls.h"
#include "tests/scratch.h"

namespace {

using registry_text::Error;
using registry_text::KeyName;
using registry_text::Step;
using Bytes = std::vector<BYTE>;

constexpr char kHead[] = "Windows Registry Editor Version 5.00\n";
const KeyName kKey{HKEY_CURRENT_USER, _T("Software\\KvText")};

class RegistryText : public testing::Test {
 protected:
  void SetUp() override { RegDeleteTreeW(kKey.hive, kKey.path.c_str()); }
  void TearDown() override { RegDeleteTreeW(kKey.hive, kKey.path.c_str()); }

  static void Import(const std::string& text) {
    std::vector<Step> steps;
    Error error;
    ASSERT_TRUE(registry_text::Parse(text, steps, error)) << error.line << ": " << error.reason;
    ASSERT_TRUE(registry_text::Apply(steps, error)) << error.line << ": " << error.reason;
  }
  // The text after the mark, as UTF-8.
  static std::string Export(const KeyName& key = kKey) {
    std::string bytes;
    Error error;
    if (!registry_text::Write(key, bytes, error)) return "refused: " + error.reason;
    EXPECT_EQ(bytes.substr(0, 2), "\xFF\xFE");
    Text units;
    for (std::size_t i = 2; i + 1 < bytes.size(); i += 2)
      units.push_back(TCHAR(BYTE(bytes[i]) | BYTE(bytes[i + 1]) << 8));
    return ToUtf8(units);
  }
};

// Every kind of data in one text that is written exactly as it is read.
constexpr char kEveryKind[] =
    "Windows Registry Editor Version 5.00\r\n"
    "\r\n"
    "[HKEY_CURRENT_USER\\Software\\KvText]\r\n"
    "@=\"default \\\"quoted\\\" C:\\\\Data\\\\\"\r\n"
    "\"Number\"=dword:0000002a\r\n"
    "\"Short number\"=hex(4):2a,00\r\n"
    "\"Empty text\"=\"\"\r\n"
    "\"Text without terminator\"=hex(1):61,00\r\n"
    "\"Text of two lines\"=hex(1):61,00,0d,00,0a,00,62,00,00,00\r\n"
    "\"Expandable\"=hex(2):25,00,00,00\r\n"
    "\"List\"=hex(7):61,00,00,00,00,00\r\n"
    "\"Quad\"=hex(b):01,02,03,04,05,06,07,08\r\n"
    "\"Nothing\"=hex(0):\r\n"
    "\"Strange\"=hex(12345678):ff\r\n"
    "\"Empty bytes\"=hex:\r\n"
    "\"Long\"=hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,10,11,12,13,14,15,\\\r\n"
    "  16,17,18,19,1a,1b,1c,1d,1e,1f,20,21,22,23,24,25,26,27,28,29,2a,2b,2c,2d,2e,\\\r\n"
    "  2f,30\r\n"
    "\"back\\\\slash \\\"quote\\\" \u00E4\U0001F600\"=\"\u20AC\"\r\n"
    "\r\n"
    "[HKEY_CURRENT_USER\\Software\\KvText\\a]b]\r\n"
    "\r\n"
    "[HKEY_CURRENT_USER\\Software\\KvText\\B]\r\n"
    "\r\n"
    "[HKEY_CURRENT_USER\\Software\\KvText\\B\\c]\r\n"
    "\"x\"=dword:ffffffff\r\n"
    "\r\n";

TEST_F(RegistryText, WritesTheExactBytesItRead) {
  Import(kEveryKind);
  EXPECT_EQ(Export(), kEveryKind);
}

TEST_F(RegistryText, TakesUtf16AndUtf8WithAndWithoutMark) {
  const std::string text = std::string(kHead) + "[HKEY_CURRENT_USER\\Software\\KvText]\n\"\u00E4\"=\"\u20AC\"\n";
  std::string wide = "\xFF\xFE";
  const CString units = FromUtf8(text);
  for (const TCHAR unit : units.View()) wide += {char(unit), char(unit >> 8)};
  for (const std::string& form : {text, "\xEF\xBB\xBF" + text, wide}) {
    RegDeleteTreeW(kKey.hive, kKey.path.c_str());
    Import(form);
    EXPECT_NE(Export().find("\"\u00E4\"=\"\u20AC\"\r\n"), std::string::npos);
  }
}

TEST_F(RegistryText, DeletesKeysAndValuesAndToleratesTheirAbsence) {
  Import(kEveryKind);
  Import(std::string(kHead) + R"(; a comment
  [HKEY_CURRENT_USER\Software\KvText]   ; another
"Number"=-
"Absent"=-
@ = "new"
"List"=DWORD:7   ; a third
"Long"=hex:1, 2 ,\
   3
[-HKEY_CURRENT_USER\Software\KvText\B]
[-HKEY_CURRENT_USER\Software\KvText\Absent]
[hkcu\Software\KvText\New\]
)");
  const std::string text = Export();
  EXPECT_EQ(text.find("\"Number\""), std::string::npos);
  EXPECT_NE(text.find("\r\n@=\"new\"\r\n"), std::string::npos) << text;
  EXPECT_NE(text.find("\r\n\"List\"=dword:00000007\r\n"), std::string::npos) << text;
  EXPECT_NE(text.find("\r\n\"Long\"=hex:01,02,03\r\n"), std::string::npos) << text;
  EXPECT_NE(text.find("KvText\\a]b]\r\n\r\n[HKEY_CURRENT_USER\\Software\\KvText\\New]\r\n\r\n"), std::string::npos)
      << text;
}

TEST_F(RegistryText, RefusesMalformedTextWithItsLine) {
  const std::string long_name(256, 'k'), long_reason = "not a key: HKEY_CURRENT_USER\\" + long_name.substr(0, 182);
  const std::string key = std::string(kHead) + "[HKEY_CURRENT_USER\\Software\\KvText]\n";
  const std::tuple<std::string, int, const char*> rows[] = {
      {"", 0, "the first line is not \"Windows Registry Editor Version 5.00\""},
      {"\xFF\xFEW", 0, "the file ends in the middle of a character"},
      {key + "\"a\"=\"\xC3(\"\n", 3, "the file is neither UTF-16 with a mark nor UTF-8"},
      {key + std::string("\"a\"=\"\0\"\n", 8), 3, "the line contains a NUL character"},
      {std::string(kHead) + "\"a\"=\"b\"\n", 2, "a value without a key"},
      {key + "[-HKEY_CURRENT_USER\\Software\\KvText\\x]\n\"a\"=\"b\"\n", 4, "a value without a key"},
      {std::string(kHead) + "[HKEY_CURRENT_USER\\Software\n", 2, "no \"]\" after the key's name"},
      {std::string(kHead) + "[HKEY_CURRENT_USER\\A] x\n", 2, "text after \"]\""},
      {std::string(kHead) + "[HKEY_CURRENT_USER\\A\\\\B]\n", 2, "not a key: HKEY_CURRENT_USER\\A\\\\B"},
      {std::string(kHead) + "[-HKEY_CURRENT_USER]\n", 2, "a whole hive cannot be deleted"},
      {key + "a=\"b\"\n", 3, "not a key, a value or a comment"},
      {key + "\"a\"\n", 3, "no \"=\" after the value's name"},
      {key + "\"a\"=\n", 3, "unknown data"},
      {key + "\"a\"=\"b\\\"\n", 3, "the text has no closing quote"},
      {key + "\"a\"=\"b\"c\n", 3, "text after the data"},
      {key + "\"a\"=dword:123456789\n", 3, "not a number of 32 bits"},
      {key + "\"a\"=hex():00\n", 3, "no type between \"hex(\" and \")\""},
      {key + "\"a\"=hex 00\n", 3, "no \":\" after hex"},
      {key + "\"a\"=hex:001\n", 3, "not a byte in hex data"},
      {key + "\"a\"=hex:00,\\\n  gg\n", 4, "not a byte in hex data"},
      {key + "\"a\"=hex:00,\\", 3, "the file ends in the middle of a value"},
      {key + "\"a\"=hex:00,\\ x\n", 3, "text after \"\\\""},
      {key + "\"a\"=-1\n", 3, "text after the data"},
      {std::string(kHead) + "[HKEY_CURRENT_USER\\" + long_name + "]\n", 2, long_reason.c_str()},
      {key + "\"" + std::string(16384, 'v') + "\"=-\n", 3, "the value's name is too long"},
  };
  for (const auto& [text, line, reason] : rows) {
    std::vector<Step> steps(1);
    Error error;
    EXPECT_FALSE(registry_text::Parse(text, steps, error)) << text;
    EXPECT_EQ(error.line, line) << text << error.reason;
    EXPECT_EQ(error.reason, reason) << text;
    EXPECT_FALSE(error.remedy.empty()) << text;
    EXPECT_TRUE(steps.empty());
  }
}

TEST_F(RegistryText, FailedImportChangesNothing) {
  Import(kEveryKind);
  std::vector<Step> steps;
  Error error;
  ASSERT_TRUE(registry_text::Parse(std::string(kHead) + "[-HKEY_CURRENT_USER\\Software\\KvText]\n"
                                                        "[HKEY_CURRENT_USER\\Software\\KvText\\New]\n\"a\"=\"b\"\n",
                                   steps, error));
  steps.back().name.assign(20000, 'n');  // what the registry itself refuses, at the last step
  EXPECT_FALSE(registry_text::Apply(steps, error));
  EXPECT_EQ(error.line, 4);
  EXPECT_EQ(Export(), kEveryKind);
}

TEST_F(RegistryText, RefusesToWriteWhatItCannotHold) {
  const kvtest::ScratchFolder folder;
  const kvtest::RegistryIn empty_registry(folder.Path());
  const std::string empty = "refused: there is no key HKEY_CURRENT_USER\\Software\\KvText: the registry is empty, ";
  EXPECT_EQ(Export().substr(0, empty.size()), empty);
  HKEY key = nullptr;
  ASSERT_EQ(RegCreateKeyExW(kKey.hive, kKey.path.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr), 0);
  EXPECT_EQ(RegSetValueExW(key, _T("two\nlines"), 0, REG_SZ, nullptr, 0), 0);
  RegCloseKey(key);
  EXPECT_EQ(Export(), "refused: a name in HKEY_CURRENT_USER\\Software\\KvText has a line break");
}

}  // namespace
