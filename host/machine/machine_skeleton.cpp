#include "host/machine/machine_skeleton.h"

#include <fmt/format.h>

#include <array>

namespace kestrova {
namespace {

constexpr char kMill[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<!-- A three-axis mill to begin with. An editor that knows XML Schema completes names and values by the file that the
     next line names. Check your changes with `kestrova machine check`, also with its option for the schema.
     Lengths and angles are in units of your choice, such as mm and degrees; nothing converts them. -->
<KESTROVAAPT xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xsi:noNamespaceSchemaLocation="../../kestrova-apt.xsd">
  <MACHINE VER="1.0"/>
  <!-- NUM is the number of CHANNEL elements. -->
  <CHANNELS NUM="1">
    <CHANNEL NAME="Main" ID="1">
      <!-- The tool: Vert Head, Horiz Head or Head; GAUGEZ is the gauge length along Z. -->
      <TARGET TYPE="Vert Head" ID="1" GAUGEZ="100"/>
      <!-- The part is on fixture 1, 400 below the gauge point. A rotary axis would be ROT_4TH_ABOUT="+X". -->
      <TARGET TYPE="Fixture" ID="1" ZOFF="-400"/>
    </CHANNEL>
  </CHANNELS>
  <!-- NUM is the number of SHAPE elements. Each shape is a file in this folder. PARENT is the shape that it hangs on,
       PTYPE the axis that moves it; HOME, MIN and MAX are those of this axis. -->
  <SHAPES NUM="3">
    <SHAPE NAME="Base" ID="1" PATH="base.stl" PTYPE="Fixed">
      <DISPLAY RGB="96 100 104" HOUSING="TRUE"/>
    </SHAPE>
    <SHAPE NAME="Table" ID="2" PATH="table.stl" PARENT="Base" PTYPE="X">
      <HOME X="0"/>
      <MIN X="-300"/>
      <MAX X="300"/>
      <DISPLAY RGB="176 180 184" CCHECK="TRUE"/>
    </SHAPE>
    <SHAPE NAME="Head" ID="3" PATH="head.stl" PARENT="Base" PTYPE="Z">
      <HOME Z="400"/>
      <MIN Z="0"/>
      <MAX Z="400"/>
      <DISPLAY RGB="150 154 158" CCHECK="TRUE"/>
    </SHAPE>
  </SHAPES>
  <!-- Which shapes move with the tool or the fixture along which axis, by their IDs. CHANNEL counts from 0. -->
  <SHAPELISTS>
    <TOOLSHAPELIST CHANNEL="0" AXIS="Z" NUM="1" LIST="3"/>
    <FIXTURESHAPELIST CHANNEL="0" ID="1" AXIS="X" NUM="1" LIST="2"/>
  </SHAPELISTS>
</KESTROVAAPT>
)";

constexpr char kLathe[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<!-- A lathe with one turret to begin with. An editor that knows XML Schema completes names and values by the file that
     the next line names. Check your changes with `kestrova machine check`, also with its option for the schema.
     Lengths and angles are in units of your choice, such as mm and degrees; nothing converts them. -->
<KESTROVAAPT xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xsi:noNamespaceSchemaLocation="../../kestrova-apt.xsd">
  <MACHINE VER="1.0"/>
  <!-- NUM is the number of CHANNEL elements: one for each program that runs at the same time. -->
  <CHANNELS NUM="1">
    <CHANNEL NAME="Rear1" ID="1">
      <!-- A turret needs a TOOL for each of its STATIONS. LOC is where a station holds the tool, VECTOR_X the tool's X
           direction there; with a GAUGEX of 0 or more this direction is reversed. -->
      <TARGET TYPE="Turret" ID="1" STATIONS="4" DIAM="200" GAUGEX="-100" ROT_ABOUT="+Z">
        <TOOL POS="1" LOC="-100 0 40" VECTOR_X="-1 0 0"/>
        <TOOL POS="2" LOC="0 -100 40" VECTOR_X="0 -1 0"/>
        <TOOL POS="3" LOC="100 0 40" VECTOR_X="1 0 0"/>
        <TOOL POS="4" LOC="0 100 40" VECTOR_X="0 1 0"/>
      </TARGET>
      <!-- The part is in the chuck, fixture 1, which turns about Z. A sub-spindle would be fixture 2. -->
      <TARGET TYPE="Fixture" ID="1" ROT_4TH_ABOUT="+Z"/>
    </CHANNEL>
  </CHANNELS>
  <!-- NUM is the number of SHAPE elements. Each shape is a file in this folder. PARENT is the shape that it hangs on,
       PTYPE the axis or the carrier that moves it; HOME, MIN and MAX are those of its axes. -->
  <SHAPES NUM="3">
    <SHAPE NAME="Bed" ID="1" PATH="bed.stl" PTYPE="Fixed">
      <DISPLAY RGB="96 100 104" HOUSING="TRUE"/>
    </SHAPE>
    <SHAPE NAME="Chuck" ID="2" PATH="chuck.stl" PARENT="Bed" PTYPE="C">
      <HOME C="0"/>
      <MIN C="-360"/>
      <MAX C="360"/>
      <DISPLAY RGB="120 122 126" CCHECK="TRUE"/>
    </SHAPE>
    <SHAPE NAME="Turret" ID="3" PATH="turret.stl" PARENT="Bed" PTYPE="Rear1">
      <HOME X="200" Z="0"/>
      <MIN X="-20" Z="-100"/>
      <MAX X="200" Z="400"/>
      <DISPLAY RGB="70 90 130" CCHECK="TRUE"/>
    </SHAPE>
  </SHAPES>
  <!-- Which shapes move with the tool or the fixture along which axis, by their IDs. CHANNEL counts from 0. -->
  <SHAPELISTS>
    <TOOLSHAPELIST CHANNEL="0" AXIS="X" NUM="1" LIST="3"/>
    <TOOLSHAPELIST CHANNEL="0" AXIS="Z" NUM="1" LIST="3"/>
    <FIXTURESHAPELIST CHANNEL="0" ID="1" AXIS="C" NUM="1" LIST="2"/>
  </SHAPELISTS>
</KESTROVAAPT>
)";

using Corner = std::array<int, 3>;

// A box as an ASCII STL file. Its facets turn their outside by the order of their corners; readers compute the normals.
std::string Box(const char* name, const Corner& least, const Corner& most) {
  constexpr int kFacets[12][3] = {{0, 2, 1}, {1, 2, 3}, {4, 5, 6}, {5, 7, 6}, {0, 1, 4}, {1, 5, 4},
                                  {2, 6, 3}, {3, 6, 7}, {0, 4, 2}, {2, 4, 6}, {1, 3, 5}, {3, 7, 5}};
  std::string out = fmt::format("solid {}\n", name);
  for (const auto& facet : kFacets) {
    out += "  facet normal 0 0 0\n    outer loop\n";
    for (const int corner : facet) {  // bit 0 is X, bit 1 is Y, bit 2 is Z
      const auto at = [&](int axis) { return corner >> axis & 1 ? most[std::size_t(axis)] : least[std::size_t(axis)]; };
      out += fmt::format("      vertex {} {} {}\n", at(0), at(1), at(2));
    }
    out += "    endloop\n  endfacet\n";
  }
  return out + fmt::format("endsolid {}\n", name);
}

}  // namespace

std::string SkeletonDefinition(VM_MACHINE_TYPE type) { return type == VM_MACHINE_MILL ? kMill : kLathe; }

std::vector<std::pair<std::string, std::string>> SkeletonSolids(VM_MACHINE_TYPE type) {
  if (type == VM_MACHINE_MILL) {
    return {{"base.stl", Box("base", {-400, -300, -700}, {400, 300, -500})},
            {"table.stl", Box("table", {-400, -200, -500}, {400, 200, -400})},
            {"head.stl", Box("head", {-100, -100, 0}, {100, 300, 300})}};
  }
  return {{"bed.stl", Box("bed", {-300, -300, -500}, {300, 300, -250})},
          {"chuck.stl", Box("chuck", {-100, -100, -250}, {100, 100, 0})},
          {"turret.stl", Box("turret", {200, -100, 0}, {400, 100, 80})}};
}

}  // namespace kestrova
