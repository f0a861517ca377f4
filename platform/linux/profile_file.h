// Profile files on the disk: cached for reading, with results that are never outdated, and locked for writing. Paths
// are system paths; results are errno codes, 0 for success.
#pragma once

#include <memory>
#include <string>

#include "platform/linux/profile_text.h"

namespace kvprofile {

// Returns the current content of the file. Only regular files are read. ENOTSUP for an encoding that is not read.
int Read(const std::string& path, std::shared_ptr<const Profile>& profile);
// Frees all cached files.
void ForgetAll();

// Keeps other writers of this and other processes out of a folder until it is destroyed.
class FolderLock {
 public:
  FolderLock() = default;
  ~FolderLock();
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

  // Waits up to kProfileLockSeconds, then returns EBUSY. On a file system without locks returns 0 and keeps nobody out.
  int Lock(const std::string& folder);

 private:
  int descriptor_ = -1;
};

}  // namespace kvprofile
