#include "host/pictures/machine_colors.h"

#include <fmt/format.h>

#include <algorithm>

#include "share/machine/machine.h"

namespace kestrova {
namespace {

constexpr DWORD kToolColors[] = {0xB4783C, 0x3C8CE6, 0xA06EA0, 0x8CA032};
constexpr DWORD kFixtureColors[] = {0x5AA050, 0xA8A23C};
constexpr int kMostRows = 100;  // of the shape table; a definition may announce any number

DWORD Channel(int value, int shift) { return DWORD(std::clamp(value, 0, 255)) << shift; }

// " (X Z)": the axes on which `find` has a list.
template <class Find>
std::string AxisNames(Find find) {
  std::string axes;
  for (int axis = 0; axis < kMachineAxes; ++axis) {
    const KVVMShapeRef* const list = find(CM_AXIS_TYPE(axis));
    if (!list || list->GetCount() == 0) continue;
    axes += axes.empty() ? " (" : " ";
    axes += TextOf(CM_AXIS_TYPE(axis));
  }
  return axes.empty() ? axes : axes + ")";
}

// The name of the channel in a row of the table, or its number.
std::string ChannelName(const KVVMMachine& machine, int row) {
  const CObList& channels = machine.GetChannels();
  int at = 0;
  for (POSITION place = channels.GetHeadPosition(); place; ++at) {
    const auto* const channel = static_cast<const CQVMChannel*>(channels.GetNext(place));
    if (at == row && !channel->GetName().IsEmpty()) return ToUtf8(channel->GetName());
  }
  return fmt::format("channel {}", row + 1);
}

}  // namespace

DWORD OwnColor(const CQVMShape& shape) {
  return Channel(shape.m_nRed, 0) | Channel(shape.m_nGreen, 8) | Channel(shape.m_nBlue, 16);
}

ShapeListColors::ShapeListColors(KVVMMachine& machine) {
  const KVVMShapeMngr& table = *machine.GetShapeMngr();
  const int rows = std::min(table.GetChannelCount(), kMostRows);
  for (int row = 0; row < rows; ++row) {
    const auto tool = [&](CM_AXIS_TYPE axis) { return table.FindToolShapes(row, axis); };
    const LegendRow legend = {LegendRow::Sample::kArea, kToolColors[std::size_t(row) % std::size(kToolColors)],
                              "tool of " + ChannelName(machine, row) + AxisNames(tool)};
    for (int axis = 0; axis < kMachineAxes; ++axis)
      if (const KVVMShapeRef* const list = tool(CM_AXIS_TYPE(axis))) Add(legend, list->GetIDs(), list->GetCount());
  }
  for (int fixture = 0; fixture < CQVMChannel::kFixtures; ++fixture) {
    for (int row = 0; row < rows; ++row) {
      const auto carried = [&](CM_AXIS_TYPE axis) { return table.FindFixtureShapes(row, axis, fixture, 1); };
      const LegendRow legend = {LegendRow::Sample::kArea, kFixtureColors[fixture],
                                fmt::format("fixture {}{}", fixture + 1, AxisNames(carried))};
      for (int axis = 0; axis < kMachineAxes; ++axis)
        if (const KVVMShapeRef* const list = carried(CM_AXIS_TYPE(axis))) Add(legend, list->GetIDs(), list->GetCount());
    }
  }
}

void ShapeListColors::Add(const LegendRow& row, const int* ids, int count) {
  const auto same = [&](const Group& group) { return group.row.text == row.text; };
  auto at = std::ranges::find_if(groups_, same);
  if (at == groups_.end()) at = groups_.insert(at, {row});
  for (int i = 0; i < count; ++i) group_of_.try_emplace(ids[i], std::size_t(at - groups_.begin()));
}

DWORD ShapeListColors::ColorOf(const CQVMShape& shape) {
  const auto at = group_of_.find(shape.GetID());
  if (at == group_of_.end()) {
    if (!fixed_.used) fixed_ = {{LegendRow::Sample::kArea, OwnColor(shape), "fixed"}, true};
    return OwnColor(shape);
  }
  Group& group = groups_[at->second];
  group.used = true;
  return group.row.color;
}

std::vector<LegendRow> ShapeListColors::Legend() const {
  std::vector<LegendRow> rows;
  for (const Group& group : groups_)
    if (group.used) rows.push_back(group.row);
  if (fixed_.used) rows.push_back(fixed_.row);
  return rows;
}

}  // namespace kestrova
