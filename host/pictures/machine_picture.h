// The picture of a machine: its solids, shaded, with the machine's axes and the origins of its fixtures.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/pictures/picture.h"
#include "host/pictures/solid.h"

class KVVMMachine;

namespace kestrova {

class MachinePicture : public Picture {
 public:
  enum class Colors {
    kLists,  // by the shape list: what moves with the tool of a channel, with a fixture, or not at all
    kOwn,    // those of the definition
  };

  // Loads a definition, or the one in a folder, and the solids beside it. A shape without a file of geometry is left
  // out. Throws Failure if the definition or a solid can't be read, is damaged or has too many triangles.
  MachinePicture(const std::string& file, Colors colors);
  ~MachinePicture() override;

  void Draw(QFDisplayInfo& display, const PictureStyle& style) override;
  // The axes, which are seen through the solids.
  void DrawOnTop(QFDisplayInfo& display, const PictureStyle& style) override;
  std::vector<LegendRow> Legend() const override;
  std::vector<PictureMark> Marks() const override;
  Standing Stands() const override;

  // What is drawn.
  int Shapes() const { return int(shapes_.size()); }
  std::size_t Triangles() const;
  // Shapes without a file of geometry: "NAME: the reason".
  const std::vector<std::string>& Missing() const { return missing_; }

 private:
  struct Shape {
    std::shared_ptr<const Solid> solid;
    DWORD color;
    bool transparent;
  };
  struct RotaryAxis {
    FRPosition base;
    FRUnitVector direction;
    std::string name;
  };

  void Load(const std::string& definition);
  void LoadShapes(const std::string& folder, Colors colors);
  void LoadFixtures();
  static void DrawSolid(QFDisplayInfo& display, const Shape& shape);
  static void DrawEdges(QFDisplayInfo& display, const Solid& solid);

  std::unique_ptr<KVVMMachine> machine_;
  std::vector<Shape> shapes_;  // the transparent ones last
  std::vector<std::string> missing_;
  std::vector<LegendRow> legend_;
  std::vector<RotaryAxis> axes_;
  std::vector<PictureMark> fixtures_;
  double size_ = 0;  // of all solids
  FRPosition centre_;
};

}  // namespace kestrova
