// Profile files on the disk: read through a cache that never gives what is no longer there, and locked for writers.
// Paths are the system's; results are errno codes, 0 for success.
#pragma once

#include <memory>
#include <string>

#include "platform/linux/profile_text.h"

namespace kvprofile {

// The file as it stands now. Only regular files are read.
int Read(const std::string& path, std::shared_ptr<const Profile>& profile);
// Gives the memory of all that is kept back.
void ForgetAll();

// Keeps other writers out of a folder, those of other processes and of other threads alike, until it is destroyed.
class FolderLock {
 public:
  FolderLock() = default;
  ~FolderLock();
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

  // Waits for up to ten seconds, then EBUSY. On a file system without locks: 0, and nobody is kept out.
  int Take(const std::string& folder);

 private:
  int descriptor_ = -1;
};

}  // namespace kvprofile
