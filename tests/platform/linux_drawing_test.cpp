// What the desktop module leaves in a process without Qt: nothing but itself.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <clocale>
#include <filesystem>
#include <limits>
#include <string>

#include "framework/device_context.h"
#include "tests/folders.h"
#include "tests/run_program.h"
#include "tests/scratch.h"

namespace {

bool IsLoaded(const char* library) {
  void* const loaded = dlopen(library, RTLD_LAZY | RTLD_NOLOAD);
  if (loaded) dlclose(loaded);
  return loaded != nullptr;
}

// The locale, and the handlers of all signals.
std::string StateOfProcess() {
  std::string state = std::setlocale(LC_ALL, nullptr);
  for (int number = 1; number < NSIG; ++number) {
    struct sigaction action = {};
    if (sigaction(number, nullptr, &action) == 0)
      state += ' ' + std::to_string(reinterpret_cast<std::uintptr_t>(action.sa_sigaction));
  }
  return state;
}

// Run by the next test in a process of its own, because the module stays loaded.
TEST(DesktopModule, DISABLED_FirstUse) {
  const std::string before = StateOfProcess();
  const LOGFONTW font = {};
  for (const HGDIOBJ made : {HGDIOBJ(CreateFontIndirectW(&font)), HGDIOBJ(CreatePen(PS_SOLID, 1, 0))})
    EXPECT_TRUE(DeleteObject(made));
  EXPECT_EQ(GetDC(nullptr), nullptr) << "no screen";
  EXPECT_FALSE(IsLoaded("libQt6Gui.so.6"));
  int no_window = 0;
  EXPECT_EQ(GetDC(&no_window), nullptr);
  const HDC dc = CreateCompatibleDC(nullptr);
  ASSERT_NE(dc, nullptr);
  SIZE size = {};
  EXPECT_TRUE(GetTextExtentPoint32W(dc, _T("A"), 1, &size));
  EXPECT_GT(size.cx, 0);
  EXPECT_EQ(StateOfProcess(), before);
}

TEST(DesktopModule, IsLoadedLateAndChangesNeitherLocaleNorSignals) {
  if (!std::filesystem::exists(kvtest::LibraryFile("libKVSHAREdesktop.so"))) GTEST_SKIP() << "KV_DESKTOP=OFF";
  const kvtest::ScratchFolder folder;
  const auto out = folder.Path() / "out";
  const int code =
      kvtest::RunProgram(kvtest::BuiltFile("bin/test_platform"),
                         {"--gtest_filter=DesktopModule.DISABLED_FirstUse", "--gtest_also_run_disabled_tests"},
                         "/dev/null", out, folder.Path() / "err");
  EXPECT_EQ(code, 0) << kvtest::ReadFile(out);
  EXPECT_EQ(kvtest::ReadFile(folder.Path() / "err"), "") << "Qt's remarks";
}

// Times are limited too: a shape's height must not count.
TEST(DesktopModule, DrawsAtTheBordersOfLong) {
  constexpr LONG kMost = std::numeric_limits<LONG>::max(), kLeast = std::numeric_limits<LONG>::min();
  constexpr int kSize = 20;
  CImageDC image;
  if (!image.Create(kSize, kSize, 0)) GTEST_SKIP() << "KV_DESKTOP=OFF";
  const POINT corners[] = {{kLeast, kLeast}, {kMost, kLeast}, {kMost, kMost}, {kLeast, kMost}};
  const RECT all = {kLeast, kLeast, kMost, kMost};
  CPen thin(PS_SOLID, 1, 0x00FF00), wide(PS_SOLID, 5, 0xFF0000);
  CBrush brush(0x0000FF);
  CRgn region;
  image.SelectObject(&thin), image.SelectObject(&brush);
  EXPECT_TRUE(image.Polygon(corners, 4));
  EXPECT_EQ(image.GetPixels()[0] & 0xFFFFFF, 0xFF0000u);
  image.MoveTo(kLeast, kLeast), image.LineTo(kMost, kMost);
  image.MoveTo(kLeast, 7), image.LineTo(kMost, 7);
  for (int i = 0; i < kSize * kSize; ++i)
    EXPECT_EQ(image.GetPixels()[i] & 0xFFFFFF, i / kSize == 7 || i / kSize == i % kSize ? 0x00FF00u : 0xFF0000u) << i;
  image.SelectObject(&wide);
  image.MoveTo(kLeast, kMost), image.LineTo(kMost, kLeast);
  EXPECT_TRUE(image.Ellipse(&all) && image.Polygon(corners, 3) && image.TextOut(kMost, kLeast, CString(_T("A"))));
  EXPECT_TRUE(region.CreatePolygonRgn(corners, 4, ALTERNATE) && image.FillRgn(&region, &brush));
  EXPECT_EQ(image.SelectClipRgn(&region), SIMPLEREGION);
  const LOGFONTW huge = {kMost, 0, kMost, 0, kMost, 0, 0, 0, 0, 0, 0, 0, 0, {}};
  EXPECT_NE(SelectObject(image.m_hDC, CreateFontIndirectW(&huge)), nullptr);
  EXPECT_GT(image.GetTextExtent(CString(_T("A"))).cx, 0);
}

}  // namespace
