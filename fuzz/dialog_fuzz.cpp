// Shows any bytes as the template of a dialog, which ends before it appears: a resource library with one dialog is made
// around them.
#include <cstring>
#include <vector>

#include "fuzz/temporary_file.h"
#include "platform/resources.h"
#include "platform/windows.h"

namespace {

constexpr WORD kDialog = 1601;

// A file with the headers of a 32-bit library and one section, which begins with three directories and a leaf.
class Library {
 public:
  explicit Library(std::vector<std::uint8_t> dialog) : bytes_(kSection) {
    Put<WORD>(0, 0x5A4D);
    Put<DWORD>(0x3C, kHeaders);
    Put<DWORD>(kHeaders, 0x4550);
    Put<WORD>(kHeaders + 6, 1);
    Put<WORD>(kHeaders + 20, kOptionalBytes);
    Put<WORD>(kOptional, 0x10B);
    Put<DWORD>(kOptional + 92, 3);
    Put<DWORD>(kOptional + 96 + 16, kAddress);
    const std::size_t row = kOptional + kOptionalBytes;
    Put<DWORD>(row + 12, kAddress);
    Put<DWORD>(row + 16, DWORD(kLeaf + 16 + dialog.size()));
    Put<DWORD>(row + 20, kSection);
    bytes_.resize(kSection + kLeaf + 16);
    PutDirectory(0, 5, 0x80000018);
    PutDirectory(24, kDialog, 0x80000030);
    PutDirectory(48, 9, kLeaf);
    Put<DWORD>(kSection + kLeaf, kAddress + kLeaf + 16);
    Put<DWORD>(kSection + kLeaf + 4, DWORD(dialog.size()));
    bytes_.insert(bytes_.end(), dialog.begin(), dialog.end());
  }
  const std::vector<std::uint8_t>& Bytes() const { return bytes_; }

 private:
  static constexpr std::size_t kHeaders = 0x40, kOptional = kHeaders + 24, kSection = 0x200;
  static constexpr WORD kOptionalBytes = 96 + 24;
  static constexpr DWORD kAddress = 0x1000, kLeaf = 72;

  template <class Number>
  void Put(std::size_t at, Number number) {
    std::memcpy(bytes_.data() + at, &number, sizeof number);
  }
  void PutDirectory(std::size_t at, DWORD number, DWORD target) {
    Put<WORD>(kSection + at + 14, 1);
    Put<DWORD>(kSection + at + 16, number);
    Put<DWORD>(kSection + at + 20, target);
  }

  std::vector<std::uint8_t> bytes_;
};

INT_PTR CALLBACK LookAndEnd(HWND dialog, UINT, WPARAM, LPARAM) {
  TCHAR text[64];
  for (const int id : {IDOK, IDCANCEL, IDHELP, 1491, 1631, 58437}) {
    GetWindowTextW(GetDlgItem(dialog, id), text, 64);
    CheckDlgButton(dialog, id, BST_CHECKED);
  }
  GetWindowTextW(dialog, text, 64);
  EndDialog(dialog, IDOK);
  return TRUE;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const Library library({bytes, bytes + size});
  const HMODULE module = LoadLibraryExW(WriteTemporaryFile(library.Bytes().data(), library.Bytes().size()), nullptr,
                                        LOAD_LIBRARY_AS_DATAFILE);
  if (size > 0 && !FindResourceW(module, MAKEINTRESOURCEW(kDialog), RT_DIALOG)) __builtin_trap();
  if (!module) return 0;  // no bytes: the section ends before them
  DialogBoxParamW(module, MAKEINTRESOURCEW(kDialog), nullptr, LookAndEnd, 0);
  FreeLibrary(module);
  return 0;
}
