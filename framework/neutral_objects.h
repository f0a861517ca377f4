// NeutralObjects, through which a higher room takes part in the clean-up of a failed load (CArchive::ReadObject): it
// says what replaces a deleted object of its classes until the clean-up ends, and drops the pointers that other objects
// have to deleted ones. One implementation serves the process. No call may raise.
#pragma once

#include "framework/object.h"

// The objects that a clean-up has deleted so far.
class GoneObjects {
 public:
  // Any pointer is allowed; it is not followed.
  virtual bool Contains(const CObject* object) const noexcept = 0;

 protected:
  ~GoneObjects() = default;
};

class NeutralObjects {
 public:
  // 0 for an object that a plain CObject replaces, or else a number up to 255 for one of the implementation's own
  // replacements. The object exists.
  virtual unsigned KindOf(const CObject* object) const noexcept = 0;
  // Builds the replacement where the CObject of an object of that kind was. It has to fit there, and be safe to delete:
  // its operator delete builds it anew. The clean-up calls its destructor at the end.
  virtual void Build(unsigned kind, void* place) const noexcept = 0;
  // Drops the pointers to deleted objects: those of an existing object, and those of lists that no archive knows.
  virtual void Forget(CObject* object, const GoneObjects& gone) const noexcept = 0;
  virtual void ForgetInLists(const GoneObjects& gone) const noexcept = 0;

 protected:
  ~NeutralObjects() = default;
};

// Set it once, before the first load. The object must exist until the process ends.
KVSHARE_API void SetNeutralObjects(const NeutralObjects* neutral);
// Null if it was not set: a plain CObject then replaces every object.
const NeutralObjects* GetNeutralObjects();

// Whether a clean-up of this thread deletes objects of the load that the object belongs to. A destructor then leaves
// the objects outside that load.
bool IsInCleanUp(const CObject* object) noexcept;
