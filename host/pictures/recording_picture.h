// The picture of a recording: draws its items again.
#pragma once

#include <string_view>

#include "host/pictures/picture.h"
#include "share/display/display_items.h"

namespace kestrova {

class RecordingPicture : public Picture {
 public:
  explicit RecordingPicture(QFToolpathDisplayItems items, const Standing& standing = {})
      : items_(std::move(items)), standing_(standing) {}
  // Reads the binary file of a recording. Throws Failure if it can't be read or is damaged.
  static QFToolpathDisplayItems ReadItems(const std::string& file);

  // Draws each item in its own state. An item with a position that no picture can show is left out. Texts are left out
  // too: a recording does not have them.
  void Draw(QFDisplayInfo& display, const PictureStyle& style) override;
  Standing Stands() const override { return standing_; }

  std::size_t ItemCount() const { return items_.size(); }
  // Of the last Draw.
  std::size_t LeftOut() const { return left_out_; }

 private:
  const QFToolpathDisplayItems items_;
  const Standing standing_;
  std::size_t left_out_ = 0;
};

}  // namespace kestrova
