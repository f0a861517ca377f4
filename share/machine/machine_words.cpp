#include "share/machine/internal/machine_words.h"

#include <algorithm>

#include "share/machine/machine_reader.h"

namespace kvmachine {
namespace {

constexpr ElementWords kElements[] = {
    {kRootName, "The definition of one machine. The reader accepts any name of this element."},
    {"MACHINE", "Facts about the definition."},
    {"CHANNELS", "The channels of the machine. It comes before SHAPELISTS."},
    {"CHANNEL", "A channel: one tool target and up to two fixtures."},
    {"TARGET",
     "What a channel works with. A turret or a head is the tool target; TYPE Fixture makes it one of the channel's two "
     "fixtures. A channel has one TARGET for each."},
    {"TOOL", "One station of the channel's turret."},
    {"SHAPES", "The solids of the machine."},
    {"SHAPE", "One solid: a geometry file, what it hangs on and what moves it."},
    {"OFFSET", "The offset of the shape's origin."},
    {"ORIGIN_OFFSET", "The same as OFFSET. If a shape has both, the later one overrides each component that it names."},
    {"HOME", "The home position of the axes that the shape has."},
    {"MIN", "The lower travel limits of the axes that the shape has."},
    {"MAX", "The upper travel limits of the axes that the shape has."},
    {"DISPLAY", "How the shape is drawn, and whether it is checked for collisions."},
    {"SHAPELISTS",
     "The shapes that move with the tool or a fixture, by channel and axis. A second one replaces the first."},
    {"TOOLSHAPELIST", "The shapes that move with the tool of a channel along one axis."},
    {"FIXTURESHAPELIST", "The shapes that move with a fixture of a channel along one axis."},
};

constexpr Unit kLength = Unit::kLength;
constexpr Unit kAngle = Unit::kAngle;
constexpr IntegerRange kFromOne = {.least = 1};

constexpr AttributeWords kAttributes[] = {
    {"MACHINE", "VER", "The version of the definition, for people. Nothing reads it.", ""},

    {"CHANNELS",
     "NUM",
     "The number of CHANNEL elements. With 0 nothing is exported; with 1 the first channel is used for any channel "
     "number.",
     "that of the machine that was loaded before, at first 0",
     Unit::kNone,
     true,
     {1, kMachineMostChannels}},

    {"CHANNEL", "NAME", "The channel's name. A channel named Front1 or Front2, in any case, has the front turret.", ""},
    {"CHANNEL", "ID",
     "The number by which the channel is found. With several channels, a number below 0 or above NUM is not exported.",
     "1"},

    {"TARGET", "TYPE", "The kind of tool target, or Fixture. It decides what the other attributes mean.",
     "no tool target", Unit::kNone, true},
    {"TARGET", "ID", "Of a tool target: its number. Of a fixture: which one it is, 1 or 2.",
     "1; a fixture's values are then stored, but the channel does not have the fixture"},
    {"TARGET", "ROT_4TH_ABOUT",
     "The direction of the 4th axis, of the tool target or of the fixture. For a fixture it also sets V4X, V4Y and "
     "V4Z.",
     "none"},
    {"TARGET", "ROT_5TH_ABOUT",
     "The direction of the 5th axis, of the tool target or of the fixture. For a fixture it also sets V5X, V5Y and "
     "V5Z.",
     "none"},
    {"TARGET", "XOFF", "Fixture: its offset along X.", "0", kLength},
    {"TARGET", "YOFF", "Fixture: its offset along Y.", "0", kLength},
    {"TARGET", "ZOFF", "Fixture: its offset along Z.", "0", kLength},
    {"TARGET", "V4X", "Fixture: the X component of the 4th axis.", "that of ROT_4TH_ABOUT, or 0"},
    {"TARGET", "V4Y", "Fixture: the Y component of the 4th axis.", "that of ROT_4TH_ABOUT, or 0"},
    {"TARGET", "V4Z", "Fixture: the Z component of the 4th axis.", "that of ROT_4TH_ABOUT, or 0"},
    {"TARGET", "V5X", "Fixture: the X component of the 5th axis.", "that of ROT_5TH_ABOUT, or 0"},
    {"TARGET", "V5Y", "Fixture: the Y component of the 5th axis.", "that of ROT_5TH_ABOUT, or 0"},
    {"TARGET", "V5Z", "Fixture: the Z component of the 5th axis.", "that of ROT_5TH_ABOUT, or 0"},
    {"TARGET", "BASE_X_4TH_AXIS", "Fixture: X of a point on the 4th axis. Not exported.", "0", kLength},
    {"TARGET", "BASE_Y_4TH_AXIS", "Fixture: Y of a point on the 4th axis. Not exported.", "0", kLength},
    {"TARGET", "BASE_Z_4TH_AXIS", "Fixture: Z of a point on the 4th axis. Not exported.", "0", kLength},
    {"TARGET", "BASE_X_5TH_AXIS", "Fixture: X of a point on the 5th axis.", "0", kLength},
    {"TARGET", "BASE_Y_5TH_AXIS", "Fixture: Y of a point on the 5th axis.", "0", kLength},
    {"TARGET", "BASE_Z_5TH_AXIS", "Fixture: Z of a point on the 5th axis.", "0", kLength},
    {"TARGET", "STATIONS", "Tool target: the number of stations of a turret.", "0", Unit::kNone, false, {.least = 0}},
    {"TARGET", "DIAM", "Tool target: the diameter of a turret.", "0", kLength},
    {"TARGET", "ROT_ABOUT", "Tool target: the axis about which a turret turns to a station.", "+Z"},
    {"TARGET", "GAUGEX",
     "Tool target: the gauge length along X. With 0 or more, the X directions of the stations are reversed.", "0",
     kLength},
    {"TARGET", "GAUGEY", "Tool target: the gauge length along Y.", "0", kLength},
    {"TARGET", "GAUGEZ", "Tool target: the gauge length along Z.", "0", kLength},

    {"TOOL", "NAME", "The station's name. Not exported.", ""},
    {"TOOL", "POS", "The station's position, from 1. If two stations have the same one, the first is used.", "1",
     Unit::kNone, false, kFromOne},
    {"TOOL", "LOC", "The point at which the station holds the tool: X, Y and Z.", "0 0 0", kLength},
    {"TOOL", "VECTOR_X", "The tool's X direction at the station; see GAUGEX of TARGET.", "0 0 0"},
    {"TOOL", "VECTOR_Z", "The tool's Z direction at the station. Not exported.", "0 0 1"},

    {"SHAPES",
     "NUM",
     "The number of SHAPE elements. With 0 nothing is exported.",
     "that of the machine that was loaded before, at first 0",
     Unit::kNone,
     true,
     {1, kMachineMostShapes}},

    {"SHAPE", "NAME", "The shape's name, which PARENT of other shapes uses.", ""},
    {"SHAPE", "ID", "The shape's number, which LIST uses. If two shapes have the same one, the first is found.", "0",
     Unit::kNone, true},
    {"SHAPE", "PATH", "The geometry file, below the machine's folder.", "", Unit::kNone, true},
    {"SHAPE", "PARENT", "The name of the shape that this one hangs on; empty for none.", ""},
    {"SHAPE", "PTYPE", "The axis or carrier that moves the shape.", "Fixed"},

    {"OFFSET", "X", "The offset along X.", "0", kLength},
    {"OFFSET", "Y", "The offset along Y.", "0", kLength},
    {"OFFSET", "Z", "The offset along Z.", "0", kLength},
    {"ORIGIN_OFFSET", "X", "The offset along X.", "0", kLength},
    {"ORIGIN_OFFSET", "Y", "The offset along Y.", "0", kLength},
    {"ORIGIN_OFFSET", "Z", "The offset along Z.", "0", kLength},
    {"HOME", "X", "The home position along X.", "0", kLength},
    {"HOME", "Y", "The home position along Y.", "0", kLength},
    {"HOME", "Z", "The home position along Z.", "0", kLength},
    {"HOME", "A", "The home position of the rotary axis A.", "0", kAngle},
    {"HOME", "B", "The home position of the rotary axis B.", "0", kAngle},
    {"HOME", "C", "The home position of the rotary axis C.", "0", kAngle},
    {"MIN", "X", "The lower limit along X.", "0", kLength},
    {"MIN", "Y", "The lower limit along Y.", "0", kLength},
    {"MIN", "Z", "The lower limit along Z.", "0", kLength},
    {"MIN", "A", "The lower limit of the rotary axis A.", "0", kAngle},
    {"MIN", "B", "The lower limit of the rotary axis B.", "0", kAngle},
    {"MIN", "C", "The lower limit of the rotary axis C.", "0", kAngle},
    {"MAX", "X", "The upper limit along X.", "0", kLength},
    {"MAX", "Y", "The upper limit along Y.", "0", kLength},
    {"MAX", "Z", "The upper limit along Z.", "0", kLength},
    {"MAX", "A", "The upper limit of the rotary axis A.", "0", kAngle},
    {"MAX", "B", "The upper limit of the rotary axis B.", "0", kAngle},
    {"MAX", "C", "The upper limit of the rotary axis C.", "0", kAngle},

    {"DISPLAY", "RGB", "The colour: red, green and blue.", "128 128 128"},
    {"DISPLAY", "TRANSPARENT", "Whether the shape is drawn transparent.", "FALSE"},
    {"DISPLAY", "HOUSING", "Whether the shape is a part of the housing.", "FALSE"},
    {"DISPLAY", "CCHECK", "Whether the shape is checked for collisions.", "FALSE"},
    {"DISPLAY", "VISIBLE", "Whether the shape is shown.", "TRUE"},
    {"DISPLAY", "METALLIC", "A name for the metal. If it is not empty, the shape looks metallic. Not exported.", ""},

    {"TOOLSHAPELIST", "NUM", "How many items of LIST are taken.", "0", Unit::kNone, true, kFromOne},
    {"TOOLSHAPELIST", "AXIS", "The axis.", "Z"},
    {"TOOLSHAPELIST",
     "CHANNEL",
     "The channel by its place in the file, from 0. The number of channels means the last one, too.",
     "0",
     Unit::kNone,
     false,
     {0, kMachineMostChannels}},
    {"TOOLSHAPELIST", "LIST", "The IDs of the shapes.", "", Unit::kNone, true},

    {"FIXTURESHAPELIST", "NUM", "How many items of LIST are taken.", "0", Unit::kNone, true, kFromOne},
    {"FIXTURESHAPELIST", "AXIS", "The axis.", "Z"},
    {"FIXTURESHAPELIST",
     "CHANNEL",
     "The channel by its place in the file, from 0. The number of channels means the last one, too.",
     "0",
     Unit::kNone,
     false,
     {0, kMachineMostChannels}},
    {"FIXTURESHAPELIST",
     "ID",
     "The fixture. The table has a third one, which no channel has.",
     "1",
     Unit::kNone,
     false,
     {1, 3}},
    {"FIXTURESHAPELIST", "LIST", "The IDs of the shapes.", "", Unit::kNone, true},
};

}  // namespace

const ElementWords* WordsOf(std::string_view element) {
  const auto* found = std::ranges::find(kElements, element, &ElementWords::element);
  return found == std::end(kElements) ? nullptr : found;
}

const AttributeWords* WordsOf(std::string_view element, std::string_view attribute) {
  const auto* found = std::ranges::find_if(
      kAttributes, [&](const AttributeWords& row) { return row.element == element && row.attribute == attribute; });
  return found == std::end(kAttributes) ? nullptr : found;
}

}  // namespace kvmachine
