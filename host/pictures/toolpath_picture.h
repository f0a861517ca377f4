// Draws the toolpaths of a document: feed moves solid in the colour of their feed, rapid moves dashed.
#pragma once

#include <optional>

#include "host/document/host_document.h"
#include "share/display/display_info.h"

namespace kestrova {

struct ToolpathPicture {
  int operations = 0;
  ULONGLONG positions = 0;
};

// Draws each operation that is neither suppressed nor recycled, or only the node with that id, in the frame of the
// document in metres. The colours are those of the table for milling; a feed without a colour is black. Throws Failure
// if the toolpaths have more positions than a picture can hold.
ToolpathPicture DrawToolpaths(const HostDocument& document, QFDisplayInfo& display, std::optional<unsigned> node = {});

}  // namespace kestrova
