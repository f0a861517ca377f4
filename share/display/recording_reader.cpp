#include "share/display/recording_reader.h"

#include <bit>

namespace {

constexpr DWORD kCoordinates = 3;
constexpr std::size_t kPointBytes = 4 + 3 * 8;
constexpr std::size_t kFewestItemBytes = 20;  // a polyline without positions

// A fault within the bytes; ends in ReadDisplayRecording.
struct Fault {
  std::size_t byte;
  const char* reason;
};

class RecordingReader {
 public:
  explicit RecordingReader(std::string_view bytes) : bytes_(bytes) {}

  std::size_t Place() const { return at_; }
  std::size_t Left() const { return bytes_.size() - at_; }

  ULONGLONG Count() {
    const std::size_t start = at_;
    const ULONGLONG count = Take<ULONGLONG>();
    if (count > Left() / kFewestItemBytes) throw Fault{start, "more items are announced than the file can hold"};
    return count;
  }

  std::shared_ptr<QFToolpathDisplayItem> Item() {
    const std::size_t start = at_;
    switch (Take<DWORD>()) {
      case QFeDisplayLine: return Line();
      case QFeDisplayPolyline: return Polyline();
      case QFeDisplayEllipse: return Ellipse();
      case QFeDisplayPolygon: return Polygon();
      case QFeDisplayTriangle: return Triangle();
      case QFeDisplayText: return Label();
      default: throw Fault{start, "an item has an unknown type"};
    }
  }

 private:
  template <class Unsigned>
  Unsigned Take() {
    if (Left() < sizeof(Unsigned)) throw Fault{bytes_.size(), "the file ends within an item"};
    Unsigned value = 0;
    for (std::size_t i = 0; i < sizeof value; ++i)
      value |= Unsigned(Unsigned(static_cast<unsigned char>(bytes_[at_ + i])) << (8 * i));
    at_ += sizeof value;
    return value;
  }
  int Int() { return int(Take<DWORD>()); }

  template <class Point>
  Point TakePoint() {
    const std::size_t start = at_;
    if (Take<DWORD>() != kCoordinates) throw Fault{start, "a position has not three coordinates"};
    double c[3];
    for (double& coordinate : c) coordinate = std::bit_cast<double>(Take<ULONGLONG>());
    if constexpr (std::is_same_v<Point, FRUnitVector>) {
      return FRUnitVector::AsGiven(c[0], c[1], c[2]);
    } else {
      return Point(c[0], c[1], c[2]);
    }
  }

  template <class Point>
  std::vector<Point> TakeList() {
    const std::size_t start = at_;
    const DWORD count = Take<DWORD>();
    if (count > Left() / kPointBytes) throw Fault{start, "a list announces more positions than the file can hold"};
    std::vector<Point> points;
    points.reserve(count);
    for (DWORD i = 0; i < count; ++i) points.push_back(TakePoint<Point>());
    return points;
  }

  // The type is already read.
  void TakeCommon(QFToolpathDisplayItem& item) {
    item.m_Color = Take<DWORD>();
    item.m_bDashed = Int();
    item.m_nLineWidth = Int();
  }
  void TakeCommon(QFToolpathDisplayFillItem& item) {
    TakeCommon(static_cast<QFToolpathDisplayItem&>(item));
    item.m_bFill = Int();
    item.m_bTransparent = Int();
    item.m_ColorFill = Take<DWORD>();
  }

  std::shared_ptr<QFToolpathDisplayItem> Line() {
    auto item = std::make_shared<QFToolpathDisplayLine>();
    TakeCommon(*item);
    item->m_StartPos = TakePoint<FRPosition>();
    item->m_EndPos = TakePoint<FRPosition>();
    return item;
  }
  std::shared_ptr<QFToolpathDisplayItem> Polyline() {
    auto item = std::make_shared<QFToolpathDisplayPolyline>();
    TakeCommon(*item);
    item->m_PtList = TakeList<FRPosition>();
    return item;
  }
  std::shared_ptr<QFToolpathDisplayItem> Ellipse() {
    auto item = std::make_shared<QFToolpathDisplayEllipse>();
    TakeCommon(*item);
    item->m_stPos = TakePoint<FRPosition>();
    item->m_nPixelHorizontal = Int();
    item->m_nPixelVertical = Int();
    return item;
  }
  std::shared_ptr<QFToolpathDisplayItem> Polygon() {
    auto item = std::make_shared<QFToolpathDisplayPolygon>();
    TakeCommon(*item);
    item->m_PtList = TakeList<FRPosition>();
    return item;
  }
  std::shared_ptr<QFToolpathDisplayItem> Triangle() {
    auto item = std::make_shared<QFToolpathDisplayTriangle>();
    TakeCommon(*item);
    item->m_PtList = TakeList<FRPosition>();
    const std::size_t start = at_;
    item->m_PtNormalList = TakeList<FRUnitVector>();
    if (item->m_PtNormalList.size() != item->m_PtList.size())
      throw Fault{start, "a triangle has not as many normals as positions"};
    return item;
  }
  std::shared_ptr<QFToolpathDisplayItem> Label() {
    auto item = std::make_shared<QFToolpathDisplayText>();
    TakeCommon(*item);
    item->m_StartPos = TakePoint<FRPosition>();
    const std::size_t start = at_;
    item->m_nCharCount = Take<DWORD>();
    if (item->m_nCharCount > Left()) throw Fault{start, "a text announces more bytes than the file can hold"};
    at_ += item->m_nCharCount;
    return item;
  }

  std::string_view bytes_;
  std::size_t at_ = 0;
};

}  // namespace

bool ReadDisplayRecording(std::string_view bytes, QFToolpathDisplayItems& items, DisplayRecordingFailure& failure) {
  RecordingReader reader(bytes);
  try {
    for (ULONGLONG left = reader.Count(); left > 0; --left) items.push_back(reader.Item());
    if (reader.Left() > 0) throw Fault{reader.Place(), "the file goes on after the last item"};
  } catch (const Fault& fault) {
    failure = {fault.byte, fault.reason};
    return false;
  }
  failure = {};
  return true;
}
