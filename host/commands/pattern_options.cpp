#include "host/commands/pattern_options.h"

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <initializer_list>

#include "host/shell/failure.h"

namespace kestrova {
namespace {

[[noreturn]] void Refuse(const char* option, const std::string& text, const char* wanted) {
  throw WrongUsage(fmt::format("{} \"{}\" is not {}", option, text, wanted));
}

double LengthOf(const char* option, const std::string& text, const LengthUnit& unit) {
  double metres = 0;
  if (!ParseLength(FromUtf8(text), unit, metres)) Refuse(option, text, "a length, such as 20 or 0.5in");
  return metres;
}

// "X,Y,Z" or, for a place, "X,Y".
std::vector<std::string> PartsOf(const char* option, const std::string& text, std::size_t least) {
  std::vector<std::string> parts = CLI::detail::split(text, ',');
  if (parts.size() < least || parts.size() > 3)
    Refuse(option, text, least == 2 ? "a place, such as 10,20 or 10,20,5" : "a direction, such as 1,0,0");
  return parts;
}

FRPosition PlaceOf(const char* option, const std::string& text, const LengthUnit& unit) {
  const std::vector<std::string> parts = PartsOf(option, text, 2);
  const auto part = [&](std::size_t at) { return at < parts.size() ? LengthOf(option, parts[at], unit) : 0; };
  return {part(0), part(1), part(2)};
}

FRUnitVector DirectionOf(const char* option, const std::string& text) {
  double numbers[3] = {};
  const std::vector<std::string> parts = PartsOf(option, text, 3);
  for (std::size_t i = 0; i < 3; ++i) {
    const char* const end = parts[i].data() + parts[i].size();
    const auto [stop, error] = std::from_chars(parts[i].data(), end, numbers[i]);
    if (error != std::errc() || stop != end) Refuse(option, text, "a direction, such as 1,0,0");
  }
  const FRUnitVector direction(numbers[0], numbers[1], numbers[2]);
  if (direction.len() < 0.5) Refuse(option, text, "a direction, such as 1,0,0");
  return direction;
}

}  // namespace

void PatternOptions::AddTo(CLI::App& command) {
  const auto add = [&](Option& option, const char* what) { command.add_option(option.name, option.values, what); };
  command.add_option("--kind", m_kind, "The kind of pattern")
      ->required()
      ->check(CLI::IsMember({"linear", "circular", "polyline"}));
  add(m_direction, "Direction of a row, such as 1,0,0");
  add(m_spacing, "Distance between neighbours");
  add(m_count, "Number of instances, in a row or in all");
  add(m_direction2, "Direction of the rows");
  add(m_spacing2, "Distance between rows");
  add(m_count2, "Number of rows");
  add(m_centre, "A point on the axis, such as 50,50,0");
  add(m_axis, "Direction of the axis; default 0,0,1");
  add(m_angle, "Angle between neighbours, or with --total of all");
  command.add_flag("--total", m_total, "The angle is that of all instances");
  add(m_points, "The points of the polyline");
}

std::unique_ptr<HostPattern> PatternOptions::Build(const LengthUnit& unit) const {
  const struct {
    const char* kind;
    std::initializer_list<const Option*> options;
    std::unique_ptr<HostPattern> (PatternOptions::*build)(const LengthUnit&) const;
  } kinds[] = {{"linear",
                {&m_direction, &m_spacing, &m_count, &m_direction2, &m_spacing2, &m_count2},
                &PatternOptions::BuildLinear},
               {"circular", {&m_centre, &m_axis, &m_angle, &m_count}, &PatternOptions::BuildCircular},
               {"polyline", {&m_points, &m_count}, &PatternOptions::BuildPolyline}};
  std::unique_ptr<HostPattern> pattern;
  for (const auto& [kind, options, build] : kinds) {
    if (m_kind != kind) continue;
    for (const Option* option : {&m_direction, &m_spacing, &m_count, &m_direction2, &m_spacing2, &m_count2, &m_centre,
                                 &m_axis, &m_angle, &m_points}) {
      if (!option->values.empty() && std::find(options.begin(), options.end(), option) == options.end())
        throw WrongUsage(fmt::format("a {} pattern has no {}; see kestrova pattern add --help", kind, option->name));
    }
    if (m_total && m_kind != "circular")
      throw WrongUsage(fmt::format("a {} pattern has no --total; see kestrova pattern add --help", kind));
    pattern = (this->*build)(unit);
  }
  if (pattern->GetIsPatterNotFullyDefined())
    throw WrongUsage(
        fmt::format("these options give no pattern: it has 1 to {} instances, no farther than 1000 km apart",
                    HostPattern::kMostInstances));
  return pattern;
}

const std::string& PatternOptions::Required(const Option& option) const {
  if (option.values.empty())
    throw WrongUsage(fmt::format("a {} pattern needs {}; see kestrova pattern add --help", m_kind, option.name));
  if (option.values.size() > 1) Refuse(option.name, option.values[1], "expected: it takes one value");
  return option.values.front();
}

DWORD PatternOptions::CountOf(const Option& option) const {
  const std::string& text = Required(option);
  DWORD count = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, count);
  if (error != std::errc() || stop != end || count == 0) Refuse(option.name, text, "a number of instances, 1 or more");
  return count;
}

HostLinearPattern::Row PatternOptions::RowOf(const Option& direction, const Option& spacing, const Option& count,
                                             const LengthUnit& unit) const {
  return {DirectionOf(direction.name, Required(direction)), LengthOf(spacing.name, Required(spacing), unit),
          CountOf(count)};
}

std::unique_ptr<HostPattern> PatternOptions::BuildLinear(const LengthUnit& unit) const {
  const bool rows = !m_direction2.values.empty() || !m_spacing2.values.empty() || !m_count2.values.empty();
  return std::make_unique<HostLinearPattern>(
      RowOf(m_direction, m_spacing, m_count, unit),
      rows ? RowOf(m_direction2, m_spacing2, m_count2, unit) : HostLinearPattern::Row{FRYAxis, 0, 1});
}

std::unique_ptr<HostPattern> PatternOptions::BuildCircular(const LengthUnit& unit) const {
  HostCircularPattern::Turn turn;
  turn.centre = PlaceOf(m_centre.name, Required(m_centre), unit);
  if (!m_axis.values.empty()) turn.axis = DirectionOf(m_axis.name, Required(m_axis));
  if (!ParseAngle(FromUtf8(Required(m_angle)), turn.angle))
    Refuse(m_angle.name, Required(m_angle), "an angle, such as 30 or 0.5rad");
  turn.total = m_total;
  turn.count = CountOf(m_count);
  return std::make_unique<HostCircularPattern>(turn);
}

std::unique_ptr<HostPattern> PatternOptions::BuildPolyline(const LengthUnit& unit) const {
  std::vector<FRPosition> points;
  for (const std::string& text : m_points.values) points.push_back(PlaceOf(m_points.name, text, unit));
  if (points.size() < 2) throw WrongUsage("a polyline pattern needs --points with two or more points");
  return std::make_unique<HostPolylinePattern>(std::move(points), CountOf(m_count));
}

}  // namespace kestrova
