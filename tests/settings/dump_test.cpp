// The exact text of dumps.
#include <gtest/gtest.h>

#include "share/settings/application_settings.h"
#include "share/settings/feed_colors.h"
#include "tests/objects/dumped.h"

namespace {

std::string Dumped(QFBaseObject& object) {
  return kvtest::Dumped([&](FILE* file) { object.DumpData(file); });
}
std::string Banner(const std::string& name) { return kvtest::DumpBanner(name); }

}  // namespace

TEST(SettingsDump, EveryValueHasItsLine) {
  CArray<int, int> numbers;
  QFSettingsValue plain(_T("Näme"));
  QFDoubleValue real(_T("n"), 1.5);
  QFStringValue text(_T("n"), _T("Text %s"));
  QFIntValue integer(_T("n"), -3);
  QFColorValue color(_T("n"), 0xFFFFFFFFul);
  QFPointValue point(_T("n"), CPoint(1, -2));
  QFRectValue rect(_T("n"), CRect(1, 2, 3, -4));
  QFTimeValue time(_T("n"), CTime(5));
  QFLongDoubleStrValue longReal(_T("n"), 1.5L);
  QFIntArrayValue array(_T("n"), numbers);
  const std::tuple<QFSettingsValue&, std::string, const char*> rows[] = {
      {plain, "QFSettingsValue", "\n m_Name: Näme"},
      {real, "QFDoubleValue", "\n m_Data: 1.500000"},
      {text, "QFStringValue", "\n m_Data: Text %s"},
      {integer, "QFIntValue", "\n m_Data: -3"},
      {color, "QFColorValue", "\n m_Data: -1"},
      {point, "QFPointValue", "\n Point: m_Data.x = 1, m_Data.y = -2"},
      {rect, "QFRectValue", "\n Rect: m_Data.left = 1, m_Data.top = 2, m_Data.right = 3, m_Data.bottom = -4"},
      {time, "QFTimeValue", ""},
      {longReal, "QFDoubleStrValue", ""},
      {array, "QFIntArrayValue", ""},
  };
  for (const auto& [value, name, line] : rows) {
    EXPECT_EQ(Dumped(value), Banner(name + " Start") + line + Banner(name + " End"));
    value.DumpData(nullptr);
  }
}

TEST(SettingsDump, KeyCountsItsItemsFromZero) {
  QFSettingsKey root(_T("Root"), _T("Software\\R"));
  root.AddValue(_T("first"), 1);
  root.AddKey(new QFSettingsKey(_T("Sub"), _T("Software\\S")));
  const std::string start = Banner("QFSettingsKey Start"),
                    end = "\nDumping for m_List End\n" + Banner("QFSettingsKey End");
  EXPECT_EQ(Dumped(root), start + "\n m_Name: Root" + "\n m_Path: Software\\R" + "\nDumping for m_List Start\n" +
                              "\n m_List Total Items : 2\n" + "\n m_List count: 0\n" + start + "\n m_Name: Sub" +
                              "\n m_Path: Software\\S" + "\nDumping for m_List Start\n" +
                              "\n m_List Total Items : 0\n" + end + "\n m_List count: 1\n" +
                              Banner("QFIntValue Start") + "\n m_Data: 1" + Banner("QFIntValue End") + end);
  root.DumpData(nullptr);
}

TEST(SettingsDump, ClassBannersEncloseNothingAndPrecedeTheKey) {
  QFEdmFeedColorsSettings table;
  QFToolingSettings tooling;
  const std::tuple<QFSettingsKey&, std::string, std::string> rows[] = {
      {table, "QFEdmFeedColorsSettings", "\n m_Name: Edm\n m_Path: Software\\Zemlor\\Kestrova\\FeedColors\\Edm\n"},
      {tooling, "QFToolingSettings", "\n m_Name: Tooling\n m_Path: Software\\Zemlor\\Kestrova\\Tooling\n"},
  };
  for (const auto& [key, banner, names] : rows) {
    const std::string start =
        Banner(banner + " Start") + Banner(banner + " End") + Banner("QFSettingsKey Start") + names;
    EXPECT_EQ(Dumped(key).substr(0, start.size()), start);
    key.DumpData(nullptr);
  }
}
