// SafeCompoundFile: a new compound file that replaces its target completely or not at all. The counterpart of SafeFile
// for files that StgCreateDocfile makes.
//
// Where the system's compound files are written in place, also with STGM_TRANSACTED, the new file is made beside the
// target and gets its name at the end. Elsewhere Commit of the root does all of it.
#pragma once

#include "platform/types.h"

class KVSHARE_API SafeCompoundFile {
 public:
  // A product path, not null and not empty.
  explicit SafeCompoundFile(LPCWSTR target);
  // Without Replace: removes the new file.
  ~SafeCompoundFile();
  SafeCompoundFile(const SafeCompoundFile&) = delete;
  SafeCompoundFile& operator=(const SafeCompoundFile&) = delete;

  // The path for StgCreateDocfile.
  LPCWSTR Path() const { return path_.c_str(); }
  // Makes the new file the target; call it after the root's Commit and Release. Returns ERROR_SUCCESS or the status of
  // the failure; the target is then unchanged.
  LONG Replace();

 private:
  Text target_;
  Text path_;  // the target's if there is nothing to replace
};
