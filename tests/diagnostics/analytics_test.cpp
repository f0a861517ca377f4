// The usage analytics: what goes into the file of events, and what keeps it out.
#include "share/diagnostics/analytics_log.h"

#include <nlohmann/json.hpp>
#include <regex>
#include <set>

#include "companions/analytics/analytics.h"
#include "companions/analytics/event_file.h"
#include "platform/errors.h"
#include "platform/paths.h"
#include "platform/process.h"
#include "share/env/product_identity.h"
#include "tests/env/clean_environment.h"
#include "tests/folders.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

ProductInfo* g_info = nullptr;

class Analytics : public kvtest::CleanEnvironment {
 protected:
  void SetUp() override {
    CleanEnvironment::SetUp();
    before_ = kvtest::UseState(state_.Path() / "a" / "b");
    g_info = &info_;
    kvtest::Register({.productInfo = [] { return g_info; }});
  }
  void TearDown() override {
    QFAnalyticsLogMgr::Exit();
    kvtest::UseState(before_);
    SetEnvironmentVariableW(_T("DO_NOT_TRACK"), nullptr);
    CleanEnvironment::TearDown();
  }

  // The events without time and process.
  static std::vector<json> Events() {
    std::string lines;
    EXPECT_EQ(EventFile().Read(lines), ERROR_SUCCESS);
    std::istringstream in(lines);
    std::vector<json> events;
    for (std::string line; std::getline(in, line);) {
      json event = json::parse(line);
      EXPECT_TRUE(
          std::regex_match(event["time"].get<std::string>(), std::regex(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z)")));
      EXPECT_EQ(event["process"], GetCurrentProcessId());
      event.erase("time");
      event.erase("process");
      events.push_back(event);
    }
    return events;
  }
  static json Text(const char* category, const char* name, const char* value) {
    return {{"kind", "text"}, {"category", category}, {"name", name}, {"value", value}};
  }

  ProductInfo info_ = {_T("X"), _T("2024"), _T("Y"), _T("Cad"), _T("2023"), _T("5")};
  kvtest::ScratchFolder state_;
  fs::path before_;
};

void AddAll() {
  QFAnalyticsLogMgr::AddProductData();
  QFAnalyticsLogMgr::AddCADData();
  QFAnalyticsLogMgr::AddCommandEvent(_T("a"), _T("\u00C4\n\"\\"));
  QFAnalyticsLogMgr::AddNumericEvent(_T("a"), _T("n"), 0.1);
  QFAnalyticsLogMgr::AddExceptionData(_T("t"), _T("x"), _T("m"), _T("p"));
  QFAnalyticsLogMgr::m_strMajorversion = _T("2019");
  QFAnalyticsLogMgr::m_strServicePack = _T("SP1");
  QFAnalyticsLogMgr::AddDataRestoreFailedData();
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(QFAnalyticsLogMgr::AddPrimeTurnUsage(), QFAnalyticsLogMgr::Reinitialize(0));
    EXPECT_EQ(QFAnalyticsLogMgr::AddVoluTurnUsage(), QFAnalyticsLogMgr::Initialize(0));
  }
  AppendTextEvent("Exception", "\xFF", nullptr, GetCurrentProcessId());
}

TEST_F(Analytics, NothingIsWrittenWithoutConsent) {
  for (const LPCTSTR forbids : {_T("1"), _T("00"), _T("true")}) {
    SetEnvironmentVariableW(_T("DO_NOT_TRACK"), forbids);
    EXPECT_EQ(QFAnalyticsLogMgr::Initialize(0), 0);
    AddAll();
  }
  SetEnvironmentVariableW(_T("DO_NOT_TRACK"), _T("0"));
  SetRegSettingDwordValue(HKEY_CURRENT_USER, kVersionDebugKey, _T("LogAnalyticsData"), 0);
  EXPECT_EQ(QFAnalyticsLogMgr::Initialize(0), 0);
  EXPECT_EQ(QFAnalyticsLogMgr::AddTextEvent(_T("a"), _T("b"), _T("c")), 0);
  EXPECT_TRUE(fs::is_empty(state_.Path()));
}

TEST_F(Analytics, EventsHaveTheFieldsOfTheirPage) {
  EXPECT_EQ(QFAnalyticsLogMgr::Initialize(0), 1);
  EXPECT_EQ(QFAnalyticsLogMgr::Initialize(0), 1);
  AddAll();
  const std::vector<json> expected = {
      {{"kind", "product"},
       {"name", "X"},
       {"language", "ENGLISH"},
       {"version", "2024 SP4"},
       {"buildCode", "2024/0826"}},
      Text("CADInfo", "Cad2023", "Cad2023 5"),
      {{"kind", "command"}, {"category", "a"}, {"name", "\u00C4\n\"\\"}},
      {{"kind", "numeric"}, {"category", "a"}, {"name", "n"}, {"value", 0.1}},
      {{"kind", "exception"}, {"type", "t"}, {"text", "x"}, {"module", "m"}, {"place", "p"}},
      Text("DataInfo", "Restore Failed", "Cad2023 5_X2019 SP1_X2024 SP4"),
      Text("Usage", "Prime Turn", "Prime Turn"),
      Text("Usage", "Volu Turn", "Volu Turn"),
      Text("Exception", "\uFFFD", ""),
  };
  const std::vector<json> events = Events();
  EXPECT_EQ(events, expected);

  std::set<std::string> written = {"time", "process"}, described;
  for (const json& event : events)
    for (const auto& [name, value] : event.items()) written.insert(name);
  const std::string page = kvtest::ReadFile(kvtest::SourceFile("docs/analytics.md"));
  const std::regex row("\n\\| `(\\w+)` \\|");
  for (std::sregex_iterator at(page.begin(), page.end(), row), end; at != end; ++at) described.insert(at->str(1));
  EXPECT_EQ(written, described);
}

TEST_F(Analytics, LinesStayWholeAndTheOlderFileHasThoseBefore) {
  const SharedLines lines(ProductPathFromSystem((state_.Path() / "s").string()) + _T("\\"), _T("f"), 10);
  const auto read = [&] {
    std::string text;
    EXPECT_EQ(lines.Read(text), ERROR_SUCCESS);
    return text;
  };
  EXPECT_EQ(read(), "");
  EXPECT_EQ(lines.Append("0123456789"), ERROR_FILE_TOO_LARGE);
  for (const char* line : {"1234", "5678"}) EXPECT_EQ(lines.Append(line), ERROR_SUCCESS);
  EXPECT_EQ(read(), "1234\n5678\n");
  EXPECT_EQ(lines.Append("9"), ERROR_SUCCESS);
  state_.Write("s/f.jsonl", "9\ntorn");  // by a writer that was killed
  EXPECT_EQ(read(), "1234\n5678\n9\n");
  EXPECT_EQ(lines.Append("abc"), ERROR_SUCCESS);
  EXPECT_EQ(read(), "1234\n5678\n9\nabc\n");
  EXPECT_EQ(lines.Append("defgh"), ERROR_SUCCESS);
  EXPECT_EQ(read(), "9\nabc\ndefgh\n");
  EXPECT_EQ(lines.Remove(), ERROR_SUCCESS);
  EXPECT_EQ(read(), "");
}

}  // namespace
