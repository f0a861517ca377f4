// Draws the toolpaths of a document: feed moves solid in the colour of their feed, rapid moves dashed.
#pragma once

#include <map>
#include <optional>

#include "host/document/host_document.h"
#include "host/pictures/picture.h"
#include "share/settings/feed_colors.h"

namespace kestrova {

// Which operations: all that are neither suppressed nor recycled, or only the node with an id; and the one, also if it
// is not among them, that is drawn over the others as highlighted.
struct ToolpathChoice {
  std::optional<unsigned> node = {};
  std::optional<unsigned> highlight = {};
};

// In the frame of the document in metres. The colours are those of the table for milling; a feed without a colour has
// that of lines.
class ToolpathPicture : public Picture {
 public:
  // The document must live as long as the picture.
  explicit ToolpathPicture(const HostDocument& document, const ToolpathChoice& choice = {});

  bool HasOperation(unsigned id) const;
  // Throws Failure if the toolpaths have more positions than a picture can hold.
  void Draw(QFDisplayInfo& display, const PictureStyle& style) override;
  // A row for rapid moves and one for each colour with its feeds.
  std::vector<LegendRow> Legend() const override;

  // Of the last Draw.
  int Operations() const { return operations_; }
  ULONGLONG Positions() const { return positions_; }

 private:
  struct Feeds {
    double least, most;  // in the document's unit per minute
  };

  const HostDocument& document_;
  const ToolpathChoice choice_;
  QFMillFeedColorsSettings table_;  // read once: without a stored table, each reading gives another colour
  PictureColors colors_ = kOnWhite;
  std::map<DWORD, Feeds> feeds_;  // by colour
  int operations_ = 0;
  bool highlighted_ = false;
  ULONGLONG positions_ = 0;
};

}  // namespace kestrova
