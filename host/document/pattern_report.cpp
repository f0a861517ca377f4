#include "host/document/pattern_report.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <vector>

#include "companions/geometry/constants.h"
#include "host/document/pattern_kinds.h"
#include "share/patterns/pattern_manager.h"
#include "share/patterns/pattern_orders.h"

namespace kestrova {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kMostNumbers = 20;  // of a list in a text

class FactsJson final : public NodeFacts {
 public:
  explicit FactsJson(const LengthUnit& unit) : unit_(unit) {}

  void Length(const char* name, double metres) override { json_[name] = JsonNumber(metres / unit_.metres); }
  void Angle(const char* name, double radians) override { json_[name] = JsonNumber(radians * RADIAN_TO_DEGREE); }
  void Number(const char* name, double value) override { json_[name] = JsonNumber(value); }
  void Direction(const char* name, const FRUnitVector& direction) override { Triple(name, direction); }
  void Place(const char* name, const FRPosition& metres) override {
    Triple(name, FRVector(metres.x() / unit_.metres, metres.y() / unit_.metres, metres.z() / unit_.metres));
  }
  void Switch(const char* name, bool on) override { json_[name] = on; }
  void Text(const char* name, LPCTSTR text) override { json_[name] = ToUtf8(text); }

  const Json& Get() const { return json_; }

 private:
  void Triple(const char* name, const FRVector& vector) {
    json_[name] = {JsonNumber(vector.x()), JsonNumber(vector.y()), JsonNumber(vector.z())};
  }

  const LengthUnit& unit_;
  Json json_ = Json::object();
};

const HostPattern* KindOf(const QFPatternInfo* pattern) { return DYNAMIC_DOWNCAST(HostPattern, pattern); }

std::vector<DWORD> SkippedOf(const QFPatternInfo& pattern) {
  CObList entries;
  pattern.GetAllInstancesToSkip(entries);
  std::vector<DWORD> numbers;
  for (POSITION at = entries.GetHeadPosition(); at;)
    if (const auto* entry = DYNAMIC_DOWNCAST(HostInstToSkip, entries.GetNext(at))) numbers.push_back(entry->Instance());
  std::sort(numbers.begin(), numbers.end());
  return numbers;
}

std::vector<const QFPattOptimizedList*> OrdersOf(const QFPatternInfo& pattern) {
  CObList entries;
  if (const QFPattOptimizMgr* orders = pattern.GetPatternOptimMgr()) orders->GetAllOptimLists(entries);
  std::vector<const QFPattOptimizedList*> found;
  for (POSITION at = entries.GetHeadPosition(); at;)
    if (const auto* order = DYNAMIC_DOWNCAST(QFPattOptimizedList, entries.GetNext(at))) found.push_back(order);
  return found;
}

template <class Numbers>
std::string Listed(const Numbers& numbers) {
  std::string text;
  std::size_t shown = 0;
  for (const auto number : numbers) {
    if (shown == kMostNumbers) return text + fmt::format(" and {} more", std::size(numbers) - shown);
    text += fmt::format("{}{}", shown++ == 0 ? "" : ", ", number);
  }
  return text;
}

}  // namespace

QFPatternInfo* PatternOf(HostNode& node) {
  return node.GetIsPatterned() ? node.GetPatternMgr()->GetPatternInfo() : nullptr;
}

nlohmann::ordered_json JsonNumber(double value) {
  return std::isfinite(value) ? Json::parse(fmt::format("{:.15g}", value + 0)) : Json();  // + 0: no -0
}

std::string PatternText(HostNode& node) {
  QFPatternInfo* const pattern = PatternOf(node);
  if (!pattern) return "pattern without a description";
  const HostPattern* const kind = KindOf(pattern);
  std::string text = kind ? fmt::format("{}, {}", kind->Kind(), ToUtf8(kind->Facts())) : "unknown";
  text += fmt::format("; {} of {} instances active", pattern->GetNumActivePatternInstances(),
                      pattern->GetNumPatternInstances());
  if (const auto skipped = SkippedOf(*pattern); !skipped.empty()) text += ", skipped " + Listed(skipped);
  const char* between = "; order for operation ";
  for (const QFPattOptimizedList* order : OrdersOf(*pattern)) {
    if (QFObject* object = order->GetObjectIdentifier())
      text += std::exchange(between, ", ") + fmt::format("{}", object->GetObjectId());
  }
  return text;
}

nlohmann::ordered_json PatternJson(HostNode& node, const LengthUnit& unit) {
  QFPatternInfo* const pattern = PatternOf(node);
  const HostPattern* const kind = KindOf(pattern);
  FactsJson facts(unit);
  if (kind) kind->ListFacts(facts);
  Json skipped = Json::array(), orders = Json::array();
  if (pattern) {
    skipped = SkippedOf(*pattern);
    for (const QFPattOptimizedList* order : OrdersOf(*pattern)) {
      QFObject* const object = order->GetObjectIdentifier();
      const auto& indices = order->GetIndices();
      orders.push_back({{"operation", object ? Json(object->GetObjectId()) : Json()},
                        {"instances", std::vector<int>(indices.begin(), indices.end())}});
    }
  }
  return {{"kind", kind ? kind->Kind() : "unknown"},
          {"facts", facts.Get()},
          {"instances", pattern ? pattern->GetNumPatternInstances() : 0},
          {"active", pattern ? pattern->GetNumActivePatternInstances() : 0},
          {"skipped", skipped},
          {"orders", orders}};
}

}  // namespace kestrova
