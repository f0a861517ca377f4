// QFFileDisplay: both files byte for byte; and the reader of the binary one, with damaged files.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <limits>

#include "platform/paths.h"
#include "share/display/display_info.h"
#include "share/display/file_display.h"
#include "share/display/recording_reader.h"
#include "tests/scratch.h"

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// The bytes of numbers on a little-endian machine: int 4, double 8.
template <class... Numbers>
std::string Bytes(Numbers... numbers) {
  std::string bytes;
  (bytes.append(reinterpret_cast<const char*>(&numbers), sizeof numbers), ...);
  return bytes;
}
std::string Point(double x, double y, double z) { return Bytes(3, x, y, z); }

class FileDisplay : public testing::Test {
 protected:
  // Records into the file what `draw` draws, and ends the recording.
  template <class Draw>
  void RecordTo(const char* file, Draw draw) {
    QFDisplayInfo info(0, nullptr, FRTransf());
    auto* const display =
        new QFFileDisplay(FRTransf(), ProductPathFromSystem(folder_.Path().string()).c_str(), CString(file));
    info.SetDisplay(display);
    info.SetColor(0x332211);
    draw(info, *display);
  }
  std::string Read(const char* file) { return kvtest::ReadFile(folder_.Path() / file); }

  const kvtest::ScratchFolder folder_;
};

void DrawEachItem(QFDisplayInfo& info, QFFileDisplay& display) {
  CList<FRPosition> points;
  CList<FRUnitVector> normals;
  for (const FRPosition& point : {FRPosition(0, 0, 1), FRPosition(1234567, 1e-7, 0.5), FRPosition(-kInfinity, 0, 0)})
    points.AddTail(point);
  normals.AddTail(FRZAxis);
  normals.AddTail(FRXAxis);
  info.SetFillColor(255);
  info.SetIsFill(1);
  info.DrawLine({1, 2, 3}, {4.5, -6, 7});
  info.SetLineStyle(1);
  info.DrawPolyline(points);
  display.DrawEllipse({1, 1, 1}, 5, 6);
  info.SetLineStyle(0);
  info.SetTransparent(1);
  info.DrawPolygon(points, normals);
  info.DrawTriangle(points, normals);
  info.DrawText({0, 0, 9}, _T("T1 \u00D8"));
}

TEST_F(FileDisplay, BothFilesByteForByte) {
  RecordTo("before", [](QFDisplayInfo& info, QFFileDisplay&) { info.SetLineStyle(1), info.DrawLine({}, {}); });
  RecordTo("rec", DrawEachItem);
  const std::string points = Bytes(3) + Point(0, 0, 1) + Point(1234567, 1e-7, 0.5) + Point(-kInfinity, 0, 0);
  const int color = 0x332211;
  const std::string expected = Bytes(6LL) + Bytes(1, color, 0, 1) + Point(1, 2, 3) + Point(4.5, -6, 7) +  //
                               Bytes(2, color, 1, 1) + points +                                           //
                               Bytes(3, color, 1, 1, 1, 0, 255) + Point(1, 1, 1) + Bytes(5, 6) +          //
                               Bytes(4, color, 0, 1, 1, 1, 255) + points +                                //
                               Bytes(5, color, 0, 1, 1, 1, 255) + points + Bytes(3) + Point(0, 0, 1) + Point(1, 0, 0) +
                               Point(1, 0, 0) + Bytes(6, color, 0, 1) + Point(0, 0, 9) + Bytes(4) +
                               std::string(4, '\0');
  EXPECT_EQ(Read("rec"), expected);
  const std::string list = "0 0 1\n1.23457e+06 1e-07 0.5\n-inf 0 0\n";
  EXPECT_EQ(Read("rec.txt"),
            "# solid\n1 2 3\n4.5 -6 7\n# dashed\nm_PtList size: 3\n" + list +
                "m_bFill: 1\nm_bTransparent: 0\nm_ColorFill: 255\n1 1 1\nm_nPixelHorizontal: 5\nm_nPixelVertical: 6\n"
                "# solid\nm_bFill: 1\nm_bTransparent: 1\nm_ColorFill: 255\nm_PtList size: 3\n" +
                list + "m_bFill: 1\nm_bTransparent: 1\nm_ColorFill: 255\nm_PtList size: 3\n" + list +
                "m_PtNormalList size: 3\n0 0 1\n1 0 0\n1 0 0\n0 0 9\n#text_char_count: 4\n#text: T1 \xC3\x98\n");

  QFToolpathDisplayItems items;
  DisplayRecordingFailure failure;
  ASSERT_TRUE(ReadDisplayRecording(expected, items, failure)) << failure.reason;
  std::string again = Bytes(LONGLONG(items.size())), text;
  for (const auto& item : items) item->Write(again, text);
  EXPECT_EQ(again, expected);
  for (std::size_t size = 0; size < expected.size(); ++size) {
    items.clear();
    EXPECT_FALSE(ReadDisplayRecording(std::string_view(expected).substr(0, size), items, failure)) << size;
    EXPECT_LE(failure.byte, size);
  }
}

TEST_F(FileDisplay, RecordsOnlyWhatAFileCanShow) {
  std::vector<int> types;
  RecordTo("none", [&](QFDisplayInfo& info, QFFileDisplay& display) {
    info.SetLineWidth(0);
    EXPECT_EQ(info.InitialiseGraphics(), 0);
    CList<FRPosition> points;
    CList<FRUnitVector> normals;
    std::vector<FRPosition> vector(2);
    AFR_Lin_List list, *long_list = &list;
    double scale = 1;
    info.DrawLine({}, {1, 1, 1}), info.DrawArrow({}, {1, 1, 1}), info.DrawEllipse({}, 1, 1);
    info.DrawPlaneEllipse({}, 1, 1), info.DrawPolyline(points, 3u), info.DrawPolyline(vector, 3u);
    info.DrawPolyline(long_list, scale);
    EXPECT_TRUE(display.GetItems().empty());
    EXPECT_EQ(display.WriteFiles(), 1);
    info.DrawPolyline(points), info.DrawPolygon(points, normals), info.DrawText({}, CString());
    display.DrawPlaneEllipse({}, 1, 1);
    for (const auto& item : display.GetItems()) types.push_back(item->m_nType);
    info.SetLineWidthWithInit(1);
    EXPECT_EQ(info.InitialiseGraphics(), 1);
  });
  EXPECT_EQ(types, (std::vector{2, 4, 6, 3}));
  EXPECT_TRUE(std::filesystem::exists(folder_.Path() / "none.txt"));
  RecordTo("", [](QFDisplayInfo& info, QFFileDisplay&) { info.DrawLine({}, {}); });
  RecordTo("empty", [](QFDisplayInfo&, QFFileDisplay&) {});
  RecordTo("no/folder", [](QFDisplayInfo& info, QFFileDisplay& display) {
    info.DrawLine({}, {});
    QFRecordingFailure failure;
    EXPECT_EQ(display.WriteFiles(&failure), 0);
    EXPECT_TRUE(ToUtf8(failure.path).ends_with("\\no/folder")) << ToUtf8(failure.path);
    EXPECT_EQ(failure.status, ERROR_PATH_NOT_FOUND);
    EXPECT_FALSE(failure.replaced);
  });
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_.Path()), {}), 2) << "none and none.txt";
  QFFileDisplay alone;
  alone.DrawLine({}, {});
  alone.DrawText({}, _T("no state"));
  EXPECT_TRUE(alone.GetItems().empty());
}

TEST(RecordingReader, RefusesCountsThatTheBytesCannotHold) {
  const std::string head = Bytes(1LL);
  const struct {
    std::string bytes;
    ULONGLONG place;
    const char* reason;
  } rows[] = {
      {Bytes(-1LL) + std::string(64, 'x'), 0, "more items are announced than the file can hold"},
      {head + Bytes(7, 0, 0, 0, 0), 8, "an item has an unknown type"},
      {head + Bytes(1, 0, 0, 0, 4) + std::string(80, '\0'), 24, "a position has not three coordinates"},
      {head + Bytes(2, 0, 0, 0, 0x7FFFFFFF), 24, "a list announces more positions than the file can hold"},
      {head + Bytes(5, 0, 0, 0, 0, 0, 0, 0, 1) + Point(0, 0, 1), 40, "a triangle has not as many normals as positions"},
      {head + Bytes(6, 0, 0, 0) + Point(0, 0, 0) + Bytes(-1, 0), 52,
       "a text announces more bytes than the file can hold"},
      {head + Bytes(2, 0, 0, 0, 0, 0), 28, "the file goes on after the last item"},
  };
  for (const auto& row : rows) {
    QFToolpathDisplayItems items;
    DisplayRecordingFailure failure;
    EXPECT_FALSE(ReadDisplayRecording(row.bytes, items, failure)) << row.reason;
    EXPECT_EQ(failure.reason, row.reason);
    EXPECT_EQ(failure.byte, row.place) << row.reason;
  }
}

}  // namespace
