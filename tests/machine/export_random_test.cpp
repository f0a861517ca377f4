// The export of random definitions against a plain restatement of its rules: the test keeps what it wrote into the
// definition as values of its own, and prints the expected text from them with printf.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <random>

#include "tests/machine/definition.h"
#include "tests/scratch.h"

namespace {

const char* const kDirections[] = {"+X", "+Y", "+Z", "-X", "-Y", "-Z"};
const char* const kAxes[] = {"X", "Y", "Z", "A", "B", "C"};
const char* const kParents[] = {"Fixed", "X", "Y", "Z", "A", "B", "C", "Rear1", "Front1", "Rear2", "Front2", "Head"};
const char* const kTargets[] = {"Turret", "Horiz Head", "Vert Head", "Rail", "Other", "Head"};

std::string Print(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string Print(const char* format, ...) {
  char text[512];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  return text;
}

// One definition, written while its expected export is.
class Sample {
 public:
  explicit Sample(unsigned seed) : random_(seed) {}

  std::string definition;
  std::string expected;

  void Make() {
    const int count = 1 + Below(3);
    const int shapes = Below(4);
    const int declared = Below(5) ? count : Below(5);
    definition = Print("<%s NUM='%d'>", Case("CHANNELS").c_str(), declared);
    std::map<int, std::string> records;
    std::string head;
    for (int i = 0; i < count; ++i) {
      const int number = Below(4) ? i + 1 : Below(6) - 1;
      const std::string record = Channel(declared == 1 ? 1 : number, number);
      if (declared == 1 ? i == 0 : number >= 0 && number <= declared)
        records.emplace(declared == 1 ? 1 : number, record);
    }
    definition += Print("</%s><unknown NUM='9'/>", Case("CHANNELS", false).c_str());
    for (const auto& [number, record] : records) head += record;
    definition += Print("<SHAPES NUM='%d'>", shapes);
    std::string bodies;
    for (int i = 0; i < shapes; ++i) bodies += Shape(i);
    definition += "</SHAPES>";
    const std::string lists = Lists(count, declared);
    if (declared != 0 && shapes != 0) expected = Print("CHANNELS=%d\n", declared) + head + bodies + lists;
  }

 private:
  int Below(int n) { return int(random_() % unsigned(n)); }
  bool Half() { return Below(2) == 0; }
  const char* Direction() { return kDirections[Below(6)]; }

  // An element name in some case; the closing tag has to repeat the opening one.
  std::string Case(std::string name, bool fresh = true) {
    if (fresh) lower_ = Half();
    for (char& c : name) c = lower_ ? char(std::tolower(c)) : c;
    return name;
  }

  // A real attribute in one of the forms that definitions have; gives the value that it is read as.
  double Real(const char* name) {
    const double magnitudes[] = {0.0004, 0.001, 0.0015, 0.5, 1, 0.9999, 12.3455, 999.9995, 123456, 2.0005};
    double value = magnitudes[Below(10)] * (Half() ? 1 : -1) * (Half() ? 1 : Below(1000) / 128.0);
    std::string text = Print("%.*f", Below(9), value);
    value = std::strtod(text.c_str(), nullptr);
    const std::size_t point = text.find('.');
    if (point != std::string::npos && Below(4) == 0) text[point] = ',';
    if (Below(9) == 0) text += "mm";
    if (Below(30) == 0) {
      text.insert(0, 1, ',');
      value = 0;
    }
    definition += Print(" %s='%s'", name, text.c_str());
    return std::min(std::max(value, -100000.0), 100000.0);
  }
  double MaybeReal(const char* name, double otherwise = 0) { return Half() ? Real(name) : otherwise; }

  std::string Channel(int shown, int number) {
    const std::string name = Print("Ch%d", Below(100));
    definition += Print("<CHANNEL NAME='%s' ID='%d'>", name.c_str(), number);
    const std::string head = Print("CHANNEL %s ID=%d TARGET=", name.c_str(), shown);
    std::string record;
    if (Below(5)) record.append(head).append(Target());
    std::string fixtures[2];
    for (int i = 0; i < 2; ++i) {
      if (Half()) fixtures[i].append(head).append("Fixture ").append(Fixture(i));
    }
    if (!fixtures[0].empty()) record.append(fixtures[0]).append(fixtures[1]);
    definition += "</CHANNEL>";
    return record;
  }

  std::string Target() {
    const char* const type = kTargets[Below(6)];
    definition += Print("<TARGET TYPE='%s'", type);
    const double x = MaybeReal("GAUGEX"), y = MaybeReal("GAUGEY"), z = MaybeReal("GAUGEZ");
    std::string text = Print("%s ", type);
    const std::string kind = type;
    if (kind == "Turret") return text + Turret(x);
    if (Half()) {
      const char* const fifth = Direction();
      definition += Print(" ROT_5TH_ABOUT='%s'", fifth);
      if (kind != "Rail" && kind != "Other") text += Print("ROT_5TH_ABOUT=%s ", fifth);
    }
    definition += "/>";
    if (kind == "Rail" || kind == "Other") return text;
    if (std::fabs(x) > 0.001) text += Print("GAUGEX=%.3f ", x);
    if (std::fabs(y) > 0.001) text += Print("GAUGEY=%.3f ", y);
    if (std::fabs(z) > 0.001) text += Print("GAUGEZ=%.3f ", z);
    return text + "\n";
  }

  std::string Turret(double gauge) {
    const double diameter = MaybeReal("DIAM");
    const int stations = Below(5);
    const char* const about = Direction();
    definition += Print(" STATIONS='%d' ROT_ABOUT='%s'>", stations, about);
    std::string text = Print("STATIONS=%d DIAM=%.3f GAUGEX=%.3f ROT_ABOUT=%s \n", stations, diameter, gauge, about);
    struct Station {
      float location[3];
      float x[3];
    };
    std::map<int, Station> tools;
    for (int i = Below(4); i-- > 0;) {
      const int position = 1 + Below(5);
      Station station;
      for (float* part : {station.location, station.x}) {
        for (int k = 0; k < 3; ++k) part[k] = float(Below(20000) - 10000) / 1024.0F;
      }
      const float* const l = station.location;
      const float* const v = station.x;
      definition += Print("<TOOL POS='%d' LOC='%.9g %.9g %.9g' VECTOR_X='%.9g %.9g  %.9g'/>", position, double(l[0]),
                          double(l[1]), double(l[2]), double(v[0]), double(v[1]), double(v[2]));
      tools.emplace(position, station);
    }
    definition += "</TARGET>";
    if (tools.empty()) return text;
    for (int i = 1; i <= stations; ++i) {
      const Station station = tools.contains(i) ? tools[i] : Station{};
      const double sign = gauge >= 0.0 ? -1.0 : 1.0;
      const float* const l = station.location;
      const float* const v = station.x;
      text += Print("STATION=%d LOC=%.3f %.3f %.3f TOOL_VECX=%.3f %.3f %.3f \n", i, double(l[0]), double(l[1]),
                    double(l[2]), sign * double(v[0]), sign * double(v[1]), sign * double(v[2]));
    }
    return text;
  }

  std::string Fixture(int index) {
    definition += Print("<TARGET TYPE='Fixture' ID='%d'", index + 1);
    std::string text = Print("ID=%d ", index + 1);
    double vectors[2][3] = {};
    for (int axis = 0; axis < 2; ++axis) {
      if (Half()) continue;
      const int direction = Below(6);
      definition += Print(" ROT_%dTH_ABOUT='%s'", axis + 4, kDirections[direction]);
      text += Print("ROT_%dTH_ABOUT=%s ", axis + 4, kDirections[direction]);
      vectors[axis][direction % 3] = direction < 3 ? 1 : -1;
    }
    for (const char* name : {"XOFF", "YOFF", "ZOFF"}) {
      const double value = MaybeReal(name);
      if (value != 0) text += Print("%s=%.3f ", name, value);
    }
    for (int axis = 0; axis < 2; ++axis) {
      for (int k = 0; k < 3; ++k) {
        const std::string name = Print("V%d%s", axis + 4, kAxes[k]);
        const double value = MaybeReal(name.c_str(), vectors[axis][k]);
        if (value != 0 && std::fabs(value) < 0.9999) text += Print("%s=%.3f ", name.c_str(), value);
      }
    }
    for (const char* name : {"BASE_X_4TH_AXIS", "BASE_Z_4TH_AXIS"}) MaybeReal(name);
    for (const char* name : {"BASE_X_5TH_AXIS", "BASE_Y_5TH_AXIS", "BASE_Z_5TH_AXIS"}) {
      const double value = MaybeReal(name);
      if (value != 0) text += Print("%s=%.3f ", name, value);
    }
    definition += "/>";
    return text + "\n";
  }

  std::string Shape(int index) {
    const char* const parent = kParents[Below(12)];
    definition += Print("<SHAPE ID='%d' PTYPE='%s' NAME='S%d' PATH='%d.stl'>", index * 3, parent, index, index);
    std::string lines;
    const std::pair<const char*, int> elements[] = {{"OFFSET", 3}, {"HOME", 6}, {"MIN", 6}, {"MAX", 6}};
    for (const auto& [element, size] : elements) {
      std::string line;
      const std::string alias = element == std::string("OFFSET") && Half() ? "ORIGIN_OFFSET" : element;
      definition += Print("<%s", Case(alias).c_str());
      for (int k = 0; k < size; ++k) {
        const double value = MaybeReal(kAxes[k]);
        if (std::fabs(value) > 0.001) line += Print("%s %s=%.3f ", element, kAxes[k], value);
      }
      definition += "/>";
      if (!line.empty()) lines.append(line).append("\n");
    }
    std::string flags;
    definition += "<DISPLAY";
    for (const char* name : {"TRANSPARENT", "HOUSING", "CCHECK"}) {
      const int form = Below(3);
      if (form) definition += Print(" %s='%s'", name, form == 1 ? "TRUE" : "True");
      if (form == 1) flags += Print("%s=TRUE ", name);
    }
    const bool hidden = Half();
    if (hidden) definition += " VISIBLE='FALSE'";
    const int red = Below(256);
    definition += Print(" RGB='%d 7 9'/></SHAPE>", red);
    return Print("SHAPE NAME=S%d ID=%d PARENT= PTYPE=%s %s%sRGB(%d,7,9)\nPATH=C:\\M\\Mill\\VMC\\%d.stl\n", index,
                 index * 3, parent, flags.c_str(), hidden ? "VISIBLE=FALSE " : "", red, index) +
           lines;
  }

  std::string Lists(int channels, int declared) {
    std::map<std::tuple<int, int, int, int>, std::string> slots;  // target, row, axis, fixture
    definition += "<SHAPELISTS>";
    for (int i = Below(6); i-- > 0;) {
      const int channel = Below(5);
      const int axis = Below(6);
      const int fixture = Below(6);  // ID 0 to 3; 4 and 5 stand for a tool's list
      const int items = 1 + Below(3);
      const int num = Below(5);
      std::string list;
      std::string shown;
      int id = 0;
      for (int k = 0; k < std::max(items, num); ++k) {
        if (k < items) {
          id = Below(50);
          list += Print(k ? ",%d" : "%d", id);
        }
        if (k < num) shown += Print(k ? ",%d" : "%d", id);
      }
      const bool tool = fixture > 3;
      definition += Print("<%sSHAPELIST CHANNEL='%d' AXIS='%s' NUM='%d' LIST='%s'", tool ? "TOOL" : "FIXTURE", channel,
                          kAxes[axis], num, list.c_str());
      definition += tool ? std::string("/>") : Print(" ID='%d'/>", fixture);
      const int row = channel == channels ? channels - 1 : channel;
      if (num == 0 || channel > channels || fixture == 0) continue;
      slots[{tool ? 0 : 1, row, axis, tool ? 0 : fixture}] =
          Print("AXIS=%s NUM=%d LIST=%s\n", kAxes[axis], num, shown.c_str());
    }
    definition += "</SHAPELISTS>";
    std::string text;
    for (const auto& [slot, rest] : slots) {
      const auto [target, row, axis, fixture] = slot;
      const int channel = declared == 1 ? 1 : row;
      text += target == 0 ? Print("TOOLSHAPELIST CHANNEL=%d ", channel)
                          : Print("FIXTURESHAPELIST CHANNEL=%d ID=%d ", channel, fixture);
      text += rest;
    }
    return text;
  }

  std::mt19937 random_;
  bool lower_ = false;
};

TEST(MachineExport, IsAsRestatedForRandomDefinitions) {
  const unsigned first = kvtest::PrintedSeed();
  for (unsigned i = 0; i < 4000; ++i) {
    Sample sample(first + i);
    sample.Make();
    ASSERT_EQ(kvtest::ExportOf(sample.definition), sample.expected) << "seed " << first + i << "\n"
                                                                    << sample.definition;
  }
}

}  // namespace
