#include "host/settings/settings_values.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <map>
#include <set>
#include <tuple>

#include "framework/ob_list.h"
#include "host/shell/color_text.h"
#include "host/shell/failure.h"
#include "host/shell/nearest_names.h"
#include "host/shell/output.h"

namespace kestrova {
namespace {

constexpr LONGLONG kMostDword = 0xFFFFFFFF;

// ---- numbers in texts

// True if the whole text is a number, decimal or 0x and hexadecimal.
bool ReadWhole(std::string_view text, LONGLONG& number) {
  const bool negative = text.starts_with('-');
  if (negative) text.remove_prefix(1);
  const int base = text.starts_with("0x") ? 16 : 10;
  if (base == 16) text.remove_prefix(2);
  if (text.empty() || text.front() == '-') return false;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  if (negative) number = -number;
  return error == std::errc() && end == text.data() + text.size();
}

Json WholeFromText(const std::string& text) {
  LONGLONG number = 0;
  return ReadWhole(text, number) ? Json(number) : Json();
}

Json RealFromText(const std::string& text) {
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() ? Json(number) : Json();
}

Json StringFromText(const std::string& text) { return text; }

Json ColorDataFromText(const std::string& text) {
  const auto color = ColorFromText(text);
  return color ? Json(*color) : Json();
}

Json NumbersFromText(const std::string& text) {
  Json numbers = Json::array();
  for (std::size_t at = 0; at <= text.size() && !text.empty();) {
    const std::size_t end = std::min(text.find(',', at), text.size());
    numbers.push_back(WholeFromText(text.substr(at, end - at)));
    at = end + 1;
  }
  return numbers;
}

std::string PlainText(const Json& data) { return data.dump(-1, ' ', false, Json::error_handler_t::replace); }
std::string StringText(const Json& data) {
  std::string text = data.get<std::string>();
  MakeHarmless(text);
  return '"' + text + '"';
}
std::string ColorDataText(const Json& data) { return ColorText(data.get<DWORD>()); }
std::string NumbersText(const Json& data) {
  std::string text;
  for (const Json& number : data) text += (text.empty() ? "" : ",") + PlainText(number);
  return text;
}
std::string TimeText(const Json& data) {
  return fmt::format("{} ({})", PlainText(data), ToUtf8(CTime(data.get<LONGLONG>()).Format(_T("%Y-%m-%d %H:%M:%S"))));
}

// ---- types

bool IsWhole(const Json& data, LONGLONG low, LONGLONG high) {
  if (!data.is_number_integer()) return false;
  if (data.is_number_unsigned() && data.get<ULONGLONG>() > ULONGLONG(LLONG_MAX)) return false;
  return data.get<LONGLONG>() >= low && data.get<LONGLONG>() <= high;
}
bool IsInt(const Json& data) { return IsWhole(data, INT_MIN, INT_MAX); }
bool IsDword(const Json& data) { return IsWhole(data, 0, kMostDword); }
bool IsReal(const Json& data) { return data.is_number() && std::isfinite(data.get<double>()); }
bool IsText(const Json& data) {
  return data.is_string() && data.get_ref<const std::string&>().find('\0') == std::string::npos;
}
bool AreInts(const Json& data) { return data.is_array() && std::all_of(data.begin(), data.end(), IsInt); }
bool IsPoint(const Json& data) { return AreInts(data) && data.size() == 2; }
bool IsRect(const Json& data) { return AreInts(data) && data.size() == 4; }

Json ToData(auto number) { return number; }
Json ToData(const CString& text) { return ToUtf8(text); }
Json ToData(const CPoint& point) { return {point.x, point.y}; }
Json ToData(const CRect& rect) { return {rect.left, rect.top, rect.right, rect.bottom}; }
Json ToData(const CTime& time) { return time.GetTime(); }
Json ToData(const CArray<int, int>& numbers) { return std::vector<int>(numbers.begin(), numbers.end()); }

void FromData(const Json& data, auto& number) { number = data.get<std::remove_reference_t<decltype(number)>>(); }
void FromData(const Json& data, CString& text) { text = FromUtf8(data.get<std::string>()); }
void FromData(const Json& data, CPoint& point) { point = {data[0], data[1]}; }
void FromData(const Json& data, CRect& rect) { rect = {data[0], data[1], data[2], data[3]}; }
void FromData(const Json& data, CTime& time) { time = data.get<LONGLONG>(); }
void FromData(const Json& data, CArray<int, int>& numbers) {
  numbers.RemoveAll();
  for (const int number : data) numbers.Add(number);
}

template <class Value>
Json Get(const QFSettingsValue& value) {
  return ToData(static_cast<const Value&>(value).GetValue());
}
template <class Value>
void Set(QFSettingsValue& value, const Json& data) {
  std::remove_cvref_t<decltype(static_cast<Value&>(value).GetValue())> datum{};
  FromData(data, datum);
  static_cast<Value&>(value).SetValue(datum);
}

struct Type {
  const CRuntimeClass* record;
  const char* name;
  const char* expected;
  Json (*get)(const QFSettingsValue& value);
  void (*set)(QFSettingsValue& value, const Json& data);
  bool (*takes)(const Json& data);
  Json (*fromText)(const std::string& text);
  std::string (*toText)(const Json& data);
};

template <class Value>
Type TypeFor(const CRuntimeClass* record, const char* name, const char* expected, bool (*takes)(const Json&),
             Json (*fromText)(const std::string&), std::string (*toText)(const Json&)) {
  return {record, name, expected, Get<Value>, Set<Value>, takes, fromText, toText};
}

const Type kTypes[] = {
    TypeFor<QFIntValue>(RUNTIME_CLASS(QFIntValue), "int", "a whole number of 32 bits", IsInt, WholeFromText, PlainText),
    TypeFor<QFDoubleValue>(RUNTIME_CLASS(QFDoubleValue), "double", "a number", IsReal, RealFromText, PlainText),
    TypeFor<QFStringValue>(RUNTIME_CLASS(QFStringValue), "string", "a text", IsText, StringFromText, StringText),
    TypeFor<QFColorValue>(RUNTIME_CLASS(QFColorValue), "colour", "#RRGGBB or a number 0xBBGGRR", IsDword,
                          ColorDataFromText, ColorDataText),
    TypeFor<QFPointValue>(RUNTIME_CLASS(QFPointValue), "point", "x,y", IsPoint, NumbersFromText, NumbersText),
    TypeFor<QFRectValue>(RUNTIME_CLASS(QFRectValue), "rect", "left,top,right,bottom", IsRect, NumbersFromText,
                         NumbersText),
    // The registry stores 32 bits of a time.
    TypeFor<QFTimeValue>(RUNTIME_CLASS(QFTimeValue), "time", "seconds since 1970, below 4294967296", IsDword,
                         WholeFromText, TimeText),
    TypeFor<QFIntArrayValue>(RUNTIME_CLASS(QFIntArrayValue), "int array", "whole numbers with commas", AreInts,
                             NumbersFromText, NumbersText),
};

// Null for a type that no tree declares.
const Type* FindType(const QFSettingsValue& value) {
  for (const Type& type : kTypes) {
    if (value.IsKindOf(type.record)) return &type;
  }
  return nullptr;
}

// ---- trees

void Collect(QFSettingsKey& key, std::vector<TreeValue>& values) {
  const auto* group = dynamic_cast<const SettingsGroup*>(&key);
  if (!group) return;
  std::map<std::string, int> numbers;
  for (POSITION at = key.GetList().GetTailPosition(); at;) {
    CObject* item = key.GetList().GetPrev(at);
    if (auto* below = DYNAMIC_DOWNCAST(QFSettingsKey, item)) Collect(*below, values);
    auto* value = DYNAMIC_DOWNCAST(QFSettingsValue, item);
    if (!value || !FindType(*value)) continue;
    const std::string name = ToUtf8(value->GetName());
    const int number = numbers[name]++;
    values.push_back({ToUtf8(group->GetGroupClassName()), ToUtf8(key.GetName()), ToUtf8(key.GetPath()), name, number,
                      &key, value, Json()});
  }
}

// ---- names

[[noreturn]] void RefuseName(const std::vector<TreeValue>& values, const std::string& name) {
  const std::size_t slash = name.rfind('/');
  std::vector<std::string> names;
  for (const TreeValue& row : values) names.push_back(slash == std::string::npos ? row.name : row.FullName());
  throw NotFound(fmt::format("there is no setting {}{}", name, NearestOr(names, name, "see kestrova settings list")));
}

}  // namespace

std::vector<TreeValue> ValuesOf(QFSettingsKey& tree, QFSettingsKey& defaults) {
  std::vector<TreeValue> declared, present;
  Collect(defaults, declared);
  Collect(tree, present);
  // A tree from a document has the document's order; the result has the order of declaration.
  std::map<std::tuple<std::string, std::string, std::string, int>, const TreeValue*> places;
  for (const TreeValue& row : present) places.emplace(std::tuple(row.group, row.path, row.name, row.number), &row);
  std::vector<TreeValue> values;
  for (TreeValue& row : declared) {
    const auto found = places.find({row.group, row.path, row.name, row.number});
    if (found == places.end() || FindType(*found->second->value) != FindType(*row.value)) continue;
    row.defaultData = DataOf(*row.value);
    row.owner = found->second->owner;
    row.value = found->second->value;
    values.push_back(std::move(row));
  }
  return values;
}

std::vector<TreeValue*> TreeValues::StoredWith(TreeValue& row) {
  if (is_document) return {&row};
  std::vector<TreeValue*> found;
  for (TreeValue& value : all)
    if (value.owner == row.owner && value.name == row.name) found.push_back(&value);
  return found;
}

void TreeValues::Set(TreeValue& row, const Json& data) {
  const std::vector<TreeValue*> rows = StoredWith(row);
  for (const TreeValue* each : rows) {
    if (!Takes(*each->value, data))
      throw WrongUsage(fmt::format("{} takes {}", row.FullName(), ExpectedBy(*each->value)));
  }
  for (TreeValue* each : rows) SetData(*each->value, data);
}

const char* TypeOf(const QFSettingsValue& value) { return FindType(value)->name; }
const char* ExpectedBy(const QFSettingsValue& value) { return FindType(value)->expected; }
Json DataOf(const QFSettingsValue& value) { return FindType(value)->get(value); }
bool Takes(const QFSettingsValue& value, const Json& data) { return FindType(value)->takes(data); }
void SetData(QFSettingsValue& value, const Json& data) { FindType(value)->set(value, data); }
std::string TextOf(const QFSettingsValue& value, const Json& data) { return FindType(value)->toText(data); }
std::string PlainTextOf(const QFSettingsValue& value) {
  const Json data = DataOf(value);
  if (data.is_string()) return data.get<std::string>();
  return data.is_number() && !value.IsKindOf(RUNTIME_CLASS(QFColorValue)) ? PlainText(data) : TextOf(value, data);
}
Json DataFromText(const QFSettingsValue& value, const std::string& text) { return FindType(value)->fromText(text); }

TreeValue& FindValue(std::vector<TreeValue>& values, const std::string& name) {
  const std::size_t slash = name.rfind('/');
  const std::string group = slash == std::string::npos ? "" : name.substr(0, slash);
  const std::string plain = slash == std::string::npos ? name : name.substr(slash + 1);
  const auto found = std::find_if(values.rbegin(), values.rend(), [&](const TreeValue& row) {
    return row.name == plain && (slash == std::string::npos || row.key == group || row.group == group);
  });
  if (found == values.rend()) RefuseName(values, name);
  return *found;
}

}  // namespace kestrova
