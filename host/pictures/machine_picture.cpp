#include "host/pictures/machine_picture.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

#include "host/machine/machine_failure.h"
#include "host/pictures/machine_colors.h"
#include "host/shell/failure.h"
#include "host/shell/whole_file.h"
#include "platform/files.h"
#include "platform/paths.h"
#include "share/machine/machine.h"

namespace kestrova {
namespace {

constexpr std::size_t kMostSolidBytes = std::size_t{1} << 30;
constexpr std::size_t kMostDefinitionBytes = std::size_t{1} << 28;
constexpr std::size_t kMostDrawn = 20'000'000;  // triangles of all shapes
constexpr double kAxisPart = 0.16;              // of an axis's length, of the machine's size
constexpr double kRotaryAxis = 1.6;             // of half a rotary axis, of the length of an axis
constexpr DWORD kAxisColors[] = {0x2828D2, 0x289628, 0xD25A28};

FRPosition PositionOf(const StlPoint& point) { return {point.x, point.y, point.z}; }
FRPosition PositionOf(const FRVector& vector) { return {vector.x(), vector.y(), vector.z()}; }
FRVector Times(const FRVector& vector, double length) {
  return {vector.x() * length, vector.y() * length, vector.z() * length};
}

bool IsFolder(const CString& path) {
  const DWORD attributes = GetFileAttributesW(path);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

// The last component of a product path, which is cut off.
CString TakeLast(CString& path) {
  const int slash = path.ReverseFind(_T('\\'));
  CString last = path.Mid(slash + 1);
  path = slash < 0 ? CString() : path.Left(slash);
  return last;
}

// Why there is no solid in the file; empty if there is one.
std::string WhyNoSolid(const CString& path) {
  if (path.IsEmpty()) return "the definition names no file";
  if (_waccess(path, 0) != 0) return SystemPathFromProduct(path) + " does not exist";
  return path.GetLength() > 4 && path.Right(4).CompareNoCase(_T(".stl")) == 0
             ? ""
             : SystemPathFromProduct(path) + " is no STL file";
}

std::vector<StlTriangle> ReadTriangles(const std::string& file) {
  std::vector<StlTriangle> triangles;
  StlFailure failure;
  const std::string bytes = ReadWholeFile(file, kMostSolidBytes);
  if (bytes.size() > kMostSolidBytes)
    throw Failure(fmt::format("{} is larger than the {} bytes that are read", file, kMostSolidBytes), {.file = file});
  if (ReadStl(bytes, triangles, failure)) return triangles;
  if (failure.line > 0)
    throw Failure(fmt::format("{}:{}: {}", file, failure.line, failure.reason), {.file = file, .line = failure.line});
  throw Failure(fmt::format("{}: byte {}: {}", file, failure.byte, failure.reason), {.file = file});
}

}  // namespace

MachinePicture::MachinePicture(const std::string& file, Colors colors) : machine_(std::make_unique<KVVMMachine>()) {
  CString path(ProductPathFromSystem(file).c_str());
  while (path.GetLength() > 1 && path[path.GetLength() - 1] == _T('\\')) path = path.Left(path.GetLength() - 1);
  if (IsFolder(path)) path = path + _T("\\") + KVVMMachine::kDefinitionFile;
  Load(SystemPathFromProduct(path));
  TakeLast(path);
  LoadShapes(SystemPathFromProduct(path.IsEmpty() ? CString(_T(".")) : path), colors);
  LoadFixtures();
}

MachinePicture::~MachinePicture() = default;

// The folders of a definition are named by machine and type.
void MachinePicture::Load(const std::string& definition) {
  const std::string bytes = ReadWholeFile(definition, kMostDefinitionBytes);
  TCHAR full[_MAX_PATH * 4] = {};
  GetFullPathNameW(ProductPathFromSystem(definition).c_str(), DWORD(std::size(full)), full, nullptr);
  CString path(full);
  TakeLast(path);
  const CString name = TakeLast(path);
  VM_MACHINE_TYPE type = VM_MACHINE_MILL;
  ReadText(ToUtf8(TakeLast(path)), type);
  if (machine_->LoadFromMemory(type, name, CString(), bytes)) return;
  throw MachineFailure(definition, machine_->GetLoadFailure().xml);
}

void MachinePicture::LoadShapes(const std::string& folder, Colors colors) {
  const CString base(ProductPathFromSystem(folder).c_str());
  const int prefix = machine_->GetPersistentPath().GetLength();
  ShapeListColors lists(*machine_);
  std::map<std::string, std::shared_ptr<const Solid>> solids;
  std::size_t loaded = 0;
  Extent extent;
  for (const CQVMShape* shape = machine_->GetFirstShape(); shape; shape = machine_->GetNextShape()) {
    if (!shape->m_bVisible) continue;
    const CString relative = shape->m_strPath.Mid(prefix);
    const CString path = relative.IsEmpty() ? relative : base + _T("\\") + relative;
    if (const std::string reason = WhyNoSolid(path); !reason.empty()) {
      missing_.push_back(fmt::format("{}: {}", ToUtf8(shape->GetName()), reason));
      continue;
    }
    const std::string file = SystemPathFromProduct(path);
    std::shared_ptr<const Solid>& solid = solids[file];
    if (!solid) {
      solid = std::make_shared<const Solid>(SolidOf(ReadTriangles(file)));
      loaded += solid->triangles.size();
      for (const StlPoint& point : solid->points) extent.Add(PositionOf(point));
    }
    shapes_.push_back(
        {solid, colors == Colors::kLists ? lists.ColorOf(*shape) : OwnColor(*shape), shape->m_bTransparent != 0});
    if (loaded > kMostTriangles || Triangles() > kMostDrawn)
      throw Failure(fmt::format("the solids of {} have more triangles than a picture can show; {} are read", folder,
                                kMostTriangles),
                    {.file = file});
  }
  std::stable_partition(shapes_.begin(), shapes_.end(), [](const Shape& shape) { return !shape.transparent; });
  if (colors == Colors::kLists) legend_ = lists.Legend();
  size_ = extent.Size();
  centre_ = extent.Centre();
}

// Channels may share a fixture: each origin and axis is drawn once.
void MachinePicture::LoadFixtures() {
  const CObList& channels = machine_->GetChannels();
  const auto add_axis = [&](CMDirType direction, const FRVector& vector, const FRVector& base, int fixture) {
    if (direction == CM_DIR_NONE || normalise(vector).len() == 0 || !Extent::IsInside(PositionOf(base))) return;
    RotaryAxis axis = {PositionOf(base), normalise(vector),
                       fmt::format("{} of fixture {}", "ABC"[direction % 3], fixture + 1)};
    const auto same = [&](const RotaryAxis& other) { return other.name == axis.name && other.base == axis.base; };
    if (std::ranges::none_of(axes_, same)) axes_.push_back(axis);
  };
  for (POSITION at = channels.GetHeadPosition(); at;) {
    const auto* const channel = static_cast<const CQVMChannel*>(channels.GetNext(at));
    for (int i = 0; i < CQVMChannel::kFixtures; ++i) {
      if (!channel->GetFixtureStatus(i)) continue;
      const PictureMark mark = {
          {channel->GetFixtureXOffset(i), channel->GetFixtureYOffset(i), channel->GetFixtureZOffset(i)},
          0,
          fmt::format("fixture {}", i + 1)};
      const auto same = [&](const PictureMark& other) { return other.name == mark.name && other.at == mark.at; };
      if (Extent::IsInside(mark.at) && std::ranges::none_of(fixtures_, same)) fixtures_.push_back(mark);
      const FRVector offset = mark.at - FRPosition();
      const auto at_offset = [&](const FRVector& base) { return base == FRVector() ? offset : base; };
      add_axis(channel->Get4thAxisFixtureDirType(i),
               {channel->GetFixture4thXVector(i), channel->GetFixture4thYVector(i), channel->GetFixture4thZVector(i)},
               at_offset({channel->GetFixture4thBaseXOffset(i), channel->GetFixture4thBaseYOffset(i),
                          channel->GetFixture4thBaseZOffset(i)}),
               i);
      add_axis(channel->Get5thAxisFixtureDirType(i),
               {channel->GetFixture5thXVector(i), channel->GetFixture5thYVector(i), channel->GetFixture5thZVector(i)},
               at_offset({channel->GetFixture5thBaseXOffset(i), channel->GetFixture5thBaseYOffset(i),
                          channel->GetFixture5thBaseZOffset(i)}),
               i);
    }
  }
}

std::size_t MachinePicture::Triangles() const {
  std::size_t count = 0;
  for (const Shape& shape : shapes_) count += shape.solid->triangles.size();
  return count;
}

// On a machine that turns parts, Z is the axis of the spindle and lies, and X is up.
Standing MachinePicture::Stands() const {
  if (machine_->GetMachType() == VM_MACHINE_MILL) return {};
  return {FRUnitVector::AsGiven(1, 0, 0), FRUnitVector::AsGiven(0, 1, 0)};
}

void MachinePicture::DrawSolid(QFDisplayInfo& display, const Shape& shape) {
  const Solid& solid = *shape.solid;
  for (std::size_t i = 0; i < solid.triangles.size(); ++i) {
    CList<FRPosition> points;
    CList<FRUnitVector> normals;
    for (std::size_t corner = 0; corner < 3; ++corner) {
      const StlPoint& normal = solid.normals[i][corner];
      points.AddTail(PositionOf(solid.points[solid.triangles[i][corner]]));
      normals.AddTail(FRUnitVector(normal.x, normal.y, normal.z));
    }
    display.DrawTriangle(points, normals);
  }
}

void MachinePicture::DrawEdges(QFDisplayInfo& display, const Solid& solid) {
  for (const auto& [from, to] : solid.edges)
    display.DrawLine(PositionOf(solid.points[from]), PositionOf(solid.points[to]));
}

void MachinePicture::Draw(QFDisplayInfo& display, const PictureStyle& style) {
  display.SetLineWidthWithInit(style.scale);
  for (const Shape& shape : shapes_) {
    display.SetColor(shape.color);
    display.SetTransparent(shape.transparent);
    display.SetIsFill(1);
    display.SetFillColor(shape.color);
    DrawSolid(display, shape);
    display.SetTransparent(0);
    display.SetColor(style.colors.edges);
    DrawEdges(display, *shape.solid);
  }
}

void MachinePicture::DrawOnTop(QFDisplayInfo& display, const PictureStyle& style) {
  const double length = size_ * kAxisPart;
  const FRVector directions[] = {FRXAxis, FRYAxis, FRZAxis};
  display.SetLineWidthWithInit(2 * style.scale);
  for (std::size_t axis = 0; axis < 3; ++axis) {
    display.SetColor(kAxisColors[axis]);
    // The head of an arrow is as long as a third of it.
    const FRPosition knee = FRPosition() + Times(directions[axis], length * 0.8);
    display.DrawLine(FRPosition(), knee);
    display.DrawArrow(FRPosition() + Times(directions[axis], length * 0.5), knee);
  }
  display.SetLineWidthWithInit(style.scale);
  display.SetColor(style.colors.lines);
  display.SetLineStyle(1);
  for (const RotaryAxis& axis : axes_)
    display.DrawLine(axis.base + Times(axis.direction, -kRotaryAxis * length),
                     axis.base + Times(axis.direction, kRotaryAxis * length));
  display.SetLineStyle(0);
}

std::vector<LegendRow> MachinePicture::Legend() const { return legend_; }

std::vector<PictureMark> MachinePicture::Marks() const {
  std::vector<PictureMark> marks = fixtures_;
  const double length = size_ * kAxisPart;
  const FRVector directions[] = {FRXAxis, FRYAxis, FRZAxis};
  for (std::size_t axis = 0; axis < 3; ++axis)
    marks.push_back({FRPosition() + Times(directions[axis], length), kAxisColors[axis], std::string(1, "XYZ"[axis]),
                     /*has_point=*/false});
  for (const RotaryAxis& axis : axes_) {  // named at the end that is farther out
    const FRPosition ends[] = {axis.base + Times(axis.direction, -kRotaryAxis * length),
                               axis.base + Times(axis.direction, kRotaryAxis * length)};
    const bool last = ends[1].distance(centre_) > ends[0].distance(centre_);
    marks.push_back({ends[last], 0, axis.name, /*has_point=*/false});
  }
  return marks;
}

}  // namespace kestrova
