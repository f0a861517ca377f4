// Draws the features of a document as outlines and repeats them by their patterns. Each instance of a pattern has the
// marker that the library draws, and a number.
#pragma once

#include <optional>
#include <set>

#include "host/document/feature_node.h"
#include "host/document/host_document.h"
#include "host/pictures/picture.h"

namespace kestrova {

// Which features: all that are neither suppressed nor recycled, or only the node with an id, which may also be one of
// its operations; and the one that is drawn over the others as highlighted, also if it is not among them.
struct FeatureChoice {
  bool patterned = false;  // only features with a pattern, and numbers instead of names
  std::optional<unsigned> node = {};
  std::optional<unsigned> highlight = {};
};

// In the frame of the document in metres.
class DocumentPicture : public Picture {
 public:
  // The document must live as long as the picture.
  explicit DocumentPicture(const HostDocument& document, const FeatureChoice& choice = {})
      : document_(document), choice_(choice) {}

  bool HasFeature(unsigned id) const;
  // Throws Failure if there are more positions or instances than a picture can show.
  void Draw(QFDisplayInfo& display, const PictureStyle& style) override;
  std::vector<LegendRow> Legend() const override;
  // The numbers of the instances, or the names of the features; none if there are too many to be read. An
  // instance has its place in the order of an operation, from 1; without an order its own number, from 0.
  std::vector<PictureMark> Marks() const override;

  // On the setup if all features have the same one: its Z axis, which points into the part, is down.
  Standing Stands() const override;

  // Of the last Draw.
  int Features() const { return features_; }
  int Patterns() const { return patterns_; }
  ULONGLONG Instances() const { return instances_; }
  ULONGLONG Skipped() const { return skipped_; }

 private:
  class Drawing;

  bool IsDrawn(HostFeature& feature) const;
  void AddNumbers(QFPatternInfo& pattern, const FRTransf& toModel);
  void AddName(HostNode& node, const FRPosition& at);

  const HostDocument& document_;
  const FeatureChoice choice_;
  PictureColors colors_ = kOnWhite;
  std::vector<PictureMark> marks_;
  std::set<DWORD> ordered_by_;  // the operations whose orders the numbers are
  bool own_numbers_ = false;    // of a pattern without an order
  bool too_many_ = false;       // marks
  bool highlighted_ = false;
  int features_ = 0;
  int patterns_ = 0;
  ULONGLONG instances_ = 0, skipped_ = 0;
};

}  // namespace kestrova
