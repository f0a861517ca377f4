// Feed colours: the search against a plain walk, the rows in the registry, the lifetime of removed rows.
#include "share/settings/feed_colors.h"

#include <random>

#include "tests/archive_bytes.h"
#include "tests/registered.h"
#include "tests/registry_calls.h"

namespace {

using kvtest::Raw, kvtest::Stored, kvtest::Text;

constexpr LPCTSTR kMillPath = _T("Software\\Zemlor\\Kestrova\\FeedColors\\Mill");
constexpr unsigned long kRed = 0x0000FF, kGreen = 0x00FF00, kBlue = 0xFF0000;

QFSettingsKey* g_document = nullptr;

void UseDocument(QFSettingsKey* settings) {
  g_document = settings;
  kvtest::Register({.docSettings = [] { return g_document; }});
}

class FeedColors : public testing::Test {
 protected:
  void SetUp() override {
    UseDocument(nullptr);
    RegDeleteTreeW(HKEY_CURRENT_USER, _T("Software"));
  }
  void TearDown() override { UseDocument(nullptr); }
};

using Rows = std::vector<std::pair<double, unsigned long>>;
Rows RowsOf(QFFeedColorsSettings& table) {
  Rows rows;
  double feed = 0;
  unsigned long color = 0;
  for (int more = table.GetFirstValue(feed, color); more; more = table.GetNextValue(feed, color))
    rows.emplace_back(feed, color);
  return rows;
}

void PutColor(LPCTSTR name, DWORD color) { kvtest::Put(HKEY_CURRENT_USER, kMillPath, name, {REG_DWORD, Raw(color)}); }

std::vector<Text> StoredNames() {
  kvtest::Key key;
  RegOpenKeyExW(HKEY_CURRENT_USER, kMillPath, 0, KEY_READ, &key);
  return kvtest::ValueNames(key);
}

}  // namespace

TEST_F(FeedColors, RowCoversTheFeedsUpToItsOwn) {
  QFMillFeedColorsSettings table;
  table.AddValue(200, kGreen);
  table.AddValue(100, kRed);
  const std::pair<double, unsigned long> rows[] = {{-INFINITY, kRed},        {100, kRed},           {100.0000005, kRed},
                                                   {100.00001, kGreen},      {200.0000005, kGreen}, {NAN, kNoFeedColor},
                                                   {200.00001, kNoFeedColor}};
  for (const auto& [feed, color] : rows) EXPECT_EQ(table.GetColorForFeed(feed), color) << feed;
}

TEST_F(FeedColors, DocumentSwitchesColorsOff) {
  QFMillFeedColorsSettings table;
  table.AddValue(100, kRed);
  QFSettingsKey document(_T("Document"), _T(""));
  UseDocument(&document);
  EXPECT_EQ(table.GetColorForFeed(50), kRed) << "no group \"Colors\"";
  auto* colors = new QFSettingsKey(_T("Colors"), _T(""));
  document.AddKey(colors);
  EXPECT_EQ(table.GetColorForFeed(50), kNoFeedColor) << "a group without the switch counts as off";
  colors->AddValue(_T("UseFeedColors"), 0);
  EXPECT_EQ(table.GetColorForFeed(50), kNoFeedColor);
  colors->SetValue(_T("UseFeedColors"), 1);
  EXPECT_EQ(table.GetColorForFeed(50), kRed);
}

TEST_F(FeedColors, SearchFindsWhatTheWalkFindsInAnyOrder) {
  std::mt19937 random(kvtest::PrintedSeed());
  QFMillFeedColorsSettings table;
  Rows model;
  for (int step = 0; step < 2000; ++step) {
    const double feed = double(random() % 400) / 4;
    if (random() % 5 == 0) {
      const unsigned long color = random() % 0x1000000;
      table.AddValue(feed, color);
      model.emplace(model.begin(), feed, color);
    }
    if (random() % 200 == 0) {
      EXPECT_EQ(table.RemoveAll(), 1);
      model.clear();
    }
    auto found = model.begin();
    while (found != model.end() && !(found->first > feed - 1e-6)) ++found;
    ASSERT_EQ(table.GetColorForFeed(feed), found == model.end() ? kNoFeedColor : found->second) << "step " << step;
    double next = -1;
    unsigned long color = 0;
    const bool more = found != model.end() && ++found != model.end();
    ASSERT_EQ(table.GetNextValue(next, color), int(more)) << "the cursor is after the row found, step " << step;
    ASSERT_EQ(next, more ? found->first : -1) << "step " << step;
  }
}

TEST_F(FeedColors, AddedRowsComeFirstUntilTheNextRestore) {
  QFMillFeedColorsSettings table;
  PutColor(_T("100.00"), kRed);
  EXPECT_EQ(table.RestoreValuesFromRegistry(), 0);
  table.AddValue(12.345, kGreen);
  table.AddValue(300, kBlue);
  EXPECT_EQ(RowsOf(table), (Rows{{300, kBlue}, {12.35, kGreen}, {100, kRed}}));
  EXPECT_EQ(table.GetColorForFeed(50), kBlue) << "in list order";
  EXPECT_EQ(table.SaveValuesToRegistry(), 1);
  EXPECT_EQ(table.RestoreValuesFromRegistry(), 0);
  EXPECT_EQ(RowsOf(table), (Rows{{12.35, kGreen}, {100, kRed}, {300, kBlue}}));
  EXPECT_EQ(table.GetColorForFeed(50), kRed);
}

TEST_F(FeedColors, RestoreSortsByNumberAndStopsAtALongerValue) {
  for (LPCTSTR name : {_T("1000.00"), _T("20"), _T("3.5mm"), _T("")}) PutColor(name, kRed);
  kvtest::Put(HKEY_CURRENT_USER, kMillPath, _T("7.00"), {REG_BINARY, std::string("\x01\x02\0\0", 4)});
  kvtest::Put(HKEY_CURRENT_USER, kMillPath, _T("8.00"), {REG_BINARY, std::string(5, '\x01')});
  PutColor(_T("9.00"), kGreen);
  QFMillFeedColorsSettings table;
  table.RestoreValuesFromRegistry();
  EXPECT_EQ(RowsOf(table), (Rows{{0, kRed}, {3.5, kRed}, {7, 0x0201}, {20, kRed}, {1000, kRed}}));
}

TEST_F(FeedColors, EmptyRegistryGivesOneRowInARandomColorAndTheKey) {
  const auto drawn = [] { return unsigned(std::rand() / (RAND_MAX / 32768 + 1) / 255); };
  std::srand(5);
  const unsigned red = drawn(), green = drawn(), blue = drawn();
  std::srand(5);
  QFSettingsKey tree(_T("tree"), _T("Software\\Other"));
  auto* table = new QFMillFeedColorsSettings;
  tree.AddKey(table);
  EXPECT_EQ(tree.RestoreValuesFromRegistry(), 0) << "the table's 0 is the tree's result";
  EXPECT_EQ(RowsOf(*table), (Rows{{100000, red | green << 8 | blue << 16}}));
  EXPECT_EQ(kvtest::Open(HKEY_CURRENT_USER, kMillPath), ERROR_SUCCESS);
  EXPECT_EQ(kvtest::Open(HKEY_CURRENT_USER, _T("Software\\Other")), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(StoredNames(), std::vector<Text>());
}

TEST_F(FeedColors, RegistryHoldsTheRowsAndNothingElse) {
  for (LPCTSTR name : {_T("1.00"), _T("2.00"), _T("Other")}) PutColor(name, 1);
  QFMillFeedColorsSettings table;
  table.AddValue(200, kGreen);
  table.AddValue(2, kRed);
  EXPECT_EQ(table.SaveValuesToRegistry(), 1);
  EXPECT_EQ(StoredNames(), (std::vector<Text>{_T("2.00"), _T("200.00")}));
  EXPECT_EQ(kvtest::Get(HKEY_CURRENT_USER, kMillPath, _T("2.00")), (Stored{REG_DWORD, Raw(DWORD(kRed))}));
}

TEST_F(FeedColors, RemovedRowsLiveAsLongAsTheTable) {
  QFMillFeedColorsSettings table;
  double feed = 0;
  unsigned long color = 0;
  for (const bool byRestore : {false, true}) {
    table.AddValue(5, kRed);
    table.AddValue(4, kBlue);
    ASSERT_EQ(table.GetFirstValue(feed, color), 1);
    const auto* row = DYNAMIC_DOWNCAST(QFColorValue, table.GetList().GetHead());
    byRestore ? table.RestoreValuesFromRegistry() : table.RemoveAll();
    EXPECT_EQ(row->GetValue(), kBlue);
    EXPECT_EQ(table.GetNextValue(feed, color), 0) << "the cursor doesn't follow them";
    EXPECT_EQ(RowsOf(table).size(), byRestore ? 1u : 0u);
  }
}

TEST_F(FeedColors, LoadKeepsTheRowsThatTheTableHas) {
  QFMillFeedColorsSettings stored, table;
  stored.AddValue(1, kRed);
  stored.AddValue(2, kRed);
  for (const double feed : {2.0, 3.0}) table.AddValue(feed, kBlue);
  double feed = 0;
  unsigned long color = 0;
  EXPECT_EQ(table.GetColorForFeed(2), kBlue) << "moves the cursor to the second row";
  const std::string bytes = kvtest::Store([&](CArchive& ar) { stored.Serialize(ar); });
  kvtest::Load(bytes, [&](CArchive& ar) { table.Serialize(ar); });
  EXPECT_EQ(table.GetNextValue(feed, color), 0) << "the cursor doesn't point into the former list";
  EXPECT_EQ(RowsOf(table), (Rows{{3, kBlue}, {2, kRed}}));
}
