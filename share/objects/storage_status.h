// What went wrong while a document was stored or loaded: one status word for the process, written by the thread that
// stores or loads and read by the host when it is through.
//
//   0x0001            an error was logged
//   0x0002            set by InitialiseSerializationStatus(1)
//   0x0020 to 0x4000  the ten location bits: what each one stands for is the host's choice
//   0x9000            a reference to an object could not be stored, or came back null
//
// A host loads in this order: InitialiseSerializationStatus, SetActiveDocReadStorageUnits, the root object,
// QFSerializeNotify::PostLoadFromStorageNotify, QFSerializeNotify::Clear, GetSerializationStatus.
#pragma once

#include "platform/types.h"

class CArchive;
class CObject;
class QFObject;

// The code of a reference that is missing.
inline constexpr unsigned kReferenceLost = 0x9000;

// Clears the word; a nonzero flag then sets 0x2.
KVSHARE_API void InitialiseSerializationStatus(int flag);
// Adds 0x1 and the code's bits.
KVSHARE_API void LogSerializationError(unsigned code);
KVSHARE_API unsigned GetSerializationStatus();
// 1 if an error was logged.
KVSHARE_API int IsErrorDetected();
// The lowest location bit that is set; 0 for none.
KVSHARE_API unsigned GetErrorLocation();
// Logs code | 0x9000 for a null owner. Always 1.
KVSHARE_API int AnalyseOwner(QFObject* owner, unsigned code);

// Stores a reference as CArchive::WriteObject does; if that raises, takes back what was written of the object, logs
// 0x9000 and stores null in its place, so that the rest of the document stays readable. What the file raises goes on to
// the caller: bytes that a full disk has not taken can't be replaced.
KVSHARE_API void StoreReferenceOrNull(CArchive& ar, const CObject* object);
