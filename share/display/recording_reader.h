// ReadDisplayRecording reads the binary file of a QFFileDisplay.
//
// The bytes may be anything: each count is compared with the bytes that are left before memory is taken, and a fault
// stops the reading. The memory stays below eight times the size of the bytes. Any thread may call.
#pragma once

#include <string>
#include <string_view>

#include "share/display/display_items.h"

struct DisplayRecordingFailure {
  ULONGLONG byte = 0;  // offset of the fault
  std::string reason;  // for humans: what is wrong; empty without a fault
};

// Appends the items and returns true. On a fault returns false with the failure; the items before the fault are
// appended. An item of a text has no text: the file has only its length.
KVSHARE_API bool ReadDisplayRecording(std::string_view bytes, QFToolpathDisplayItems& items,
                                      DisplayRecordingFailure& failure);
