// A back end that notes each call as a line.
#pragma once

#include <fmt/format.h>

#include <string>

#include "share/display/display_info.h"

namespace kvtest {

inline std::string TextOf(const FRVector& v) { return fmt::format(" ({:g} {:g} {:g})", v.x(), v.y(), v.z()); }
inline std::string TextOf(const FRPosition& p) { return TextOf(p - FRPosition()); }
template <class T>
std::string TextOf(const CList<T>& list) {
  std::string text;
  for (POSITION at = list.GetHeadPosition(); at;) text += TextOf(list.GetNext(at));
  return text;
}

// The calls go to a text that outlives the display, which its info deletes.
class DisplayLog : public QFBaseDisplay {
 public:
  explicit DisplayLog(std::string& log) : log_(log) {}
  ~DisplayLog() override { log_ += "end\n"; }

  int InitialiseGraphics() override {
    log_ += fmt::format("initialise {:x} {}\n", m_pDisplayData->GetColor(), m_pDisplayData->GetLineWidth());
    return 7;
  }
  int UninitialiseGraphics() override { return log_ += "uninitialise\n", 8; }
  void DrawLine(const FRPosition& from, const FRPosition& to) override { Note("line", TextOf(from) + TextOf(to)); }
  void DrawArrow(const FRPosition& from, const FRPosition& to) override { Note("arrow", TextOf(from) + TextOf(to)); }
  void DrawEllipse(const FRPosition& centre, double a, double b, const FRTransf& camera) override {
    Note("ellipse", TextOf(centre) + fmt::format(" {} {} {}", a, b, camera.GetScalingMatrix()));
  }
  void DrawPlaneEllipse(const FRPosition& centre, double a, double b) override {
    Note("plane ellipse", TextOf(centre) + fmt::format(" {} {}", a, b));
  }
  void DrawTriangle(const CList<FRPosition>& points, const CList<FRUnitVector>& normals) override {
    Note("triangle", TextOf(points) + " normals" + TextOf(normals));
  }
  void DrawPolygon(const CList<FRPosition>& points, const CList<FRUnitVector>& normals) override {
    Note("polygon", TextOf(points) + " normals" + TextOf(normals));
  }
  using QFBaseDisplay::DrawPolyline;
  void DrawPolyline(AFR_Lin_List*& points, double& scale, const QFDisplayTransforms& transforms) override {
    std::string text;
    for (const FRPosition& point : *points) text += TextOf(transforms.Apply(point / scale));
    Note("long polyline", text);
  }
  void DrawPolyline(const std::vector<FRPosition>& points, unsigned mode) override {
    Note("vector", TextOf(points.at(0)) + fmt::format(" {}", mode));
  }
  void DrawPolyline(const CList<FRPosition>& points, unsigned mode) override {
    Note("list", TextOf(points) + fmt::format(" {}", mode));
  }
  void DrawPolyline(const CList<FRPosition>& points) override { Note("polyline", TextOf(points)); }
  void DrawText(const FRPosition& position, const CString& text) override {
    Note("text", TextOf(position) + ' ' + ToUtf8(text));
  }
  void SetLineWidthOnlyByGLCall(int width) override { Note("width", fmt::format(" {}", width)); }

 private:
  void Note(const char* name, const std::string& rest) { log_ += name + rest + '\n'; }

  std::string& log_;
};

}  // namespace kvtest
