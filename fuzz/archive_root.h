// The first object of an archive that a fuzzer made.
#pragma once

#include "framework/archive.h"
#include "share/objects/object.h"

// False for damage, which must throw CArchiveException. The object may be null.
inline bool LoadRoot(CArchive& ar, QFObject*& root) {
  try {
    ar >> root;
    return true;
  } catch (const CArchiveException&) {
    return false;
  }
}
