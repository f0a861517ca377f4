// The status word of a save or load: errors that do not stop it. There is one word for the process; only the thread
// that stores or loads may use these functions.
//
//   0x0001            an error was logged
//   0x0002            set by InitialiseSerializationStatus(1)
//   0x0020 to 0x4000  the ten location bits; the host defines their meaning
//   0x9000            a reference could not be stored, or an owner is null (AnalyseOwner)
//
// A host loads in this order: InitialiseSerializationStatus, SetActiveDocReadStorageUnits, the root object,
// QFSerializeNotify::PostLoadFromStorageNotify, QFSerializeNotify::Clear, GetSerializationStatus. If the root object
// raises, the archive has deleted all objects of the load (share/objects/object.h): the host calls only Clear.
//
// A host saves in this order: InitialiseSerializationStatus, the root object, CArchive::Close, GetSerializationStatus.
// Look at the status after saving, too: a save that raised nothing can have replaced references by null, for example
// the owner of a node whose chain of owners is too long for the stack.
#pragma once

#include "platform/types.h"

class CArchive;
class CObject;
class QFObject;

// The code of a lost reference.
inline constexpr unsigned kReferenceLost = 0x9000;

// Sets the word to 0, or to 0x2 for a nonzero flag.
KVSHARE_API void InitialiseSerializationStatus(int flag);
// Adds 0x1 and the code's bits.
KVSHARE_API void LogSerializationError(unsigned code);
KVSHARE_API unsigned GetSerializationStatus();
// 1 if an error was logged.
KVSHARE_API int IsErrorDetected();
// The lowest location bit that is set; 0 without one.
KVSHARE_API unsigned GetErrorLocation();
// Logs code | 0x9000 if the owner is null. Does not use the owner otherwise. Always 1.
KVSHARE_API int AnalyseOwner(QFObject* owner, unsigned code);

// Stores a reference as CArchive::WriteObject does; null is stored as null. If that raises, it removes the written part
// of the object from the archive, logs 0x9000 and stores null, so that the rest of the document stays readable. It
// passes a CFileException on, for example of a full disk: the archive is then of no more use.
KVSHARE_API void StoreReferenceOrNull(CArchive& ar, const CObject* object);
