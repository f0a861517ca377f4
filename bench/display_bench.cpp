// Drawing through the display's interface compared with the same calls of OpenGL without it, in a context without a
// window; recording compared with {fmt} and fwrite of the same bytes; and the steps from a machine's solid to a PNG.
#include <fmt/format.h>
#include <malloc.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "bench/ratio.h"
#include "host/pictures/machine_picture.h"
#include "host/pictures/opengl_picture.h"
#include "host/pictures/png_file.h"
#include "platform/off_screen.h"
#include "platform/opengl.h"
#include "platform/paths.h"
#include "share/display/display_info.h"
#include "share/display/file_display.h"

namespace {

namespace fs = std::filesystem;
using kvbench::Case;

constexpr int kPairs = 7;

fs::path Folder() {
  const fs::path memory = "/dev/shm";
  return (fs::is_directory(memory) ? memory : fs::temp_directory_path()) / "kvbench-display";
}

// A spiral of short moves within the image.
std::vector<FRPosition> Toolpath(std::size_t size) {
  std::vector<FRPosition> points;
  for (std::size_t i = 0; i < size; ++i) {
    const double angle = 0.05 * double(i), radius = 0.9 * double(i) / double(size);
    points.emplace_back(radius * std::cos(angle), radius * std::sin(angle), 0.1);
  }
  return points;
}

void Vertex(const FRPosition& point) { glVertex3f(float(point.x()), float(point.y()), float(point.z())); }

void BareSegments(const std::vector<FRPosition>& points) {
  glBegin(GL_LINES);
  for (std::size_t i = 1; i < points.size(); ++i) {
    Vertex(points[i - 1]);
    Vertex(points[i]);
  }
  glEnd();
}

void BareLine(const FRPosition& from, const FRPosition& to) {
  glBegin(GL_LINES);
  Vertex(from);
  Vertex(to);
  glEnd();
}

void MeasureToolpath(kvbench::Table& table, QFDisplayInfo& display, std::size_t size) {
  const std::vector<FRPosition> points = Toolpath(size);
  AFR_Lin_List list;
  for (const FRPosition& point : points) list.append(point);
  AFR_Lin_List* path = &list;
  double scale = 1;
  table.Pair(
      {"toolpath as AFR_Lin_List", size, "glVertex3f in a loop", 1.1, 1},
      [&] { display.DrawPolyline(path, scale), glFinish(); }, [&] { BareSegments(points), glFinish(); }, kPairs);
  table.Pair(
      {"DrawLine one by one", size, "glBegin, glVertex, glEnd", 1.3, size},
      [&] {
        for (std::size_t i = 1; i < size; ++i) display.DrawLine(points[i - 1], points[i]);
        glFinish();
      },
      [&] {
        for (std::size_t i = 1; i < size; ++i) BareLine(points[i - 1], points[i]);
        glFinish();
      },
      kPairs);
}

// Both in as many OpenGL lists, of 250 lines.
void MeasureLists(kvbench::Table& table, QFDisplayInfo& display, std::size_t size) {
  constexpr std::size_t kBatch = 251;
  const std::vector<FRPosition> points = Toolpath(size);
  const auto lists = GLsizei(size / kBatch + 1);
  const auto record_bare = [&](GLuint first) {
    for (std::size_t i = 1; i < size; ++i) {
      if (i % kBatch == 1) {
        if (i > 1) glEndList();
        glNewList(first + GLuint(i / kBatch), GL_COMPILE);
      }
      BareLine(points[i - 1], points[i]);
    }
    glEndList();
  };
  table.Pair(
      {"lines recorded in lists", size, "bare lists", 1.1, size},
      [&] {
        QFDisplayList* const list = display.GenerateDisplayList(LONGLONG(size));
        display.BeginDisplayList(list);
        for (std::size_t i = 1; i < size; ++i) display.DrawLine(points[i - 1], points[i]);
        display.EndDisplayList(list);
        delete list;
      },
      [&] {
        const GLuint first = glGenLists(lists);
        record_bare(first);
        glDeleteLists(first, lists);
      },
      kPairs);
  const std::unique_ptr<QFDisplayList> list(display.GenerateDisplayList(LONGLONG(size)));
  display.BeginDisplayList(list.get());
  for (std::size_t i = 1; i < size; ++i) display.DrawLine(points[i - 1], points[i]);
  display.EndDisplayList(list.get());
  const GLuint first = glGenLists(lists);
  record_bare(first);
  table.Pair(
      {"lists rendered", size, "bare lists", 1.1, size},
      [&] { display.RenderDisplayList(list.get(), FRPosition()), glFinish(); },
      [&] {
        for (GLsizei i = 0; i < lists; ++i) glCallList(first + GLuint(i));
        glFinish();
      },
      kPairs);
  glDeleteLists(first, lists);
}

// ---- recording

// The two forms of a line, written without items.
void WritePlain(const std::vector<FRPosition>& points, std::FILE* binary, std::FILE* text) {
  const ULONGLONG count = points.size() - 1;
  std::fwrite(&count, sizeof count, 1, binary);
  fmt::memory_buffer line;
  for (std::size_t i = 1; i < points.size(); ++i) {
    const int head[] = {QFeDisplayLine, 0, 0, 2};
    std::fwrite(head, sizeof head, 1, binary);
    line.clear();
    for (const FRPosition& point : {points[i - 1], points[i]}) {
      const int three = 3;
      const double c[] = {point.x(), point.y(), point.z()};
      std::fwrite(&three, sizeof three, 1, binary);
      std::fwrite(c, sizeof c, 1, binary);
      fmt::format_to(std::back_inserter(line), "{:g} {:g} {:g}\n", c[0], c[1], c[2]);
    }
    std::fwrite(line.data(), line.size(), 1, text);
  }
}

void MeasureRecording(kvbench::Table& table, std::size_t size) {
  const std::vector<FRPosition> points = Toolpath(size + 1);
  const fs::path folder = Folder();
  const CString product(ProductPathFromSystem(folder.string()).c_str());
  QFDisplayInfo display(0, nullptr, FRTransf());
  table.Pair(
      {"record lines and write both files", size, "{fmt} and fwrite", 1.2, size},
      [&] {
        display.SetDisplay(new QFFileDisplay(FRTransf(), product, _T("ours")));
        for (std::size_t i = 1; i < points.size(); ++i) display.DrawLine(points[i - 1], points[i]);
        display.SetDisplay(nullptr);
      },
      [&] {
        for (const char* name : {"plain", "plain.txt"}) fs::remove(folder / name);
        std::FILE* const binary = std::fopen((folder / "plain").c_str(), "wb");
        std::FILE* const text = std::fopen((folder / "plain.txt").c_str(), "wb");
        WritePlain(points, binary, text);
        for (std::FILE* file : {binary, text}) std::fflush(file), fsync(fileno(file)), std::fclose(file);
      },
      size > 100'000 ? 5 : kPairs);
  if (fs::file_size(folder / "ours") != fs::file_size(folder / "plain")) std::abort();
}

// The bytes that are allocated.
std::size_t HeapBytes() { return mallinfo2().uordblks + mallinfo2().hblkhd; }

void MeasureItemMemory(std::size_t size) {
  const std::vector<FRPosition> points = Toolpath(size + 1);
  QFDisplayInfo display(0, nullptr, FRTransf());
  auto* const recording = new QFFileDisplay;
  display.SetDisplay(recording);
  const std::size_t before = HeapBytes();
  for (std::size_t i = 1; i < points.size(); ++i) display.DrawLine(points[i - 1], points[i]);
  const double each = double(HeapBytes() - before) / double(size);
  kvbench::Table::Row({"memory of a recorded line", size, "its own size"}, fmt::format("{:.0f} bytes", each),
                      fmt::format("{} bytes", sizeof(QFToolpathDisplayLine)), each / sizeof(QFToolpathDisplayLine));
}

// ---- a machine

// A machine of one solid, a wavy plate with two triangles for each of its squares.
fs::path WriteMachine(std::size_t triangles) {
  const fs::path folder = Folder() / "Mill" / "Plate";
  fs::create_directories(folder);
  std::ofstream(folder / "KestrovaAPT.xml") << "<R><SHAPES NUM='1'><SHAPE NAME='Plate' ID='1' "
                                               "PATH='plate.stl'><DISPLAY RGB='90 120 180'/></SHAPE></SHAPES></R>";
  const auto side = int(std::sqrt(double(triangles) / 2));
  std::string bytes(80, ' ');
  const auto append = [&](const auto& value) { bytes.append(reinterpret_cast<const char*>(&value), sizeof value); };
  append(std::uint32_t(2 * side * side));
  const auto corner = [&](int x, int y) {
    for (const float c : {float(x), float(y), float(20 * std::sin(x * 0.03) * std::cos(y * 0.02))}) append(c);
  };
  for (int x = 0; x < side; ++x) {
    for (int y = 0; y < side; ++y) {
      for (const int half : {0, 1}) {
        bytes.append(12, '\0');
        corner(x, y);
        half ? corner(x + 1, y + 1) : corner(x + 1, y);
        half ? corner(x, y + 1) : corner(x + 1, y + 1);
        bytes.append(2, '\0');
      }
    }
  }
  std::ofstream(folder / "plate.stl", std::ios::binary) << bytes;
  return folder;
}

void MeasureMachine(std::size_t size) {
  const std::string machine = WriteMachine(size).string();
  double times[5] = {kvbench::detail::Now()};
  kestrova::MachinePicture picture(machine, kestrova::MachinePicture::Colors::kOwn);
  times[1] = kvbench::detail::Now();
  kestrova::OpenGLPicture image(kestrova::ViewOptions{});
  image.Draw(picture);
  glFinish();
  times[2] = kvbench::detail::Now();
  const kestrova::Pixels pixels = image.Read();
  times[3] = kvbench::detail::Now();
  const std::string png = kestrova::PngOf(pixels);
  times[4] = kvbench::detail::Now();
  const char* const steps[] = {"load", "draw", "read back", "encode"};
  const double total = times[4] - times[0];
  for (int i = 0; i < 4; ++i)
    kvbench::Table::Row({std::string("machine to PNG: ") + steps[i], picture.Triangles(), "all steps"},
                        kvbench::detail::Time(times[i + 1] - times[i]), kvbench::detail::Time(total),
                        (times[i + 1] - times[i]) / total);
}

}  // namespace

int main() {
  fs::create_directories(Folder());
  {
    const OffScreenContext context;
    const OffScreenImage image(context, 256, 256, 0);
    if (!image.IsReady()) {
      std::fprintf(stderr, "display_bench: %s\n", image.Reason().c_str());
      return 1;
    }
    QFDisplayInfo display(/*useOpenGL=*/1, nullptr, FRTransf());
    display.InitialiseGraphics();
    kvbench::Table table("Drawing by OpenGL");
    for (const std::size_t size : {1'000U, 10'000U, 100'000U, 1'000'000U}) MeasureToolpath(table, display, size);
    for (const std::size_t size : {1'000U, 10'000U, 100'000U, 1'000'000U}) MeasureLists(table, display, size);
    display.UninitialiseGraphics();
  }
  kvbench::Table table("Recording and pictures");
  for (const std::size_t size : {1'000U, 10'000U, 100'000U, 1'000'000U}) MeasureRecording(table, size);
  MeasureItemMemory(1'000'000);
  for (const std::size_t size : {10'000U, 100'000U, 1'000'000U}) MeasureMachine(size);
  fs::remove_all(Folder());
}
