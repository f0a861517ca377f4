// Records a picture into the two files of a recording.
#pragma once

#include <string>

#include "host/pictures/picture.h"

namespace kestrova {

// The readable form of a recording lies beside it.
inline std::string TextFileOf(const std::string& recording) { return recording + ".txt"; }

// Throws WrongUsage if the path names no file.
void CheckRecordingPath(const std::string& file);

// Records the picture and writes both files; without an item it writes nothing. Returns the number of items. Throws
// Failure if a file can't be written.
std::size_t Record(Picture& picture, const std::string& file);

}  // namespace kestrova
