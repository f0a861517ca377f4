// KVVMMachineXMLReaderUtil reads a machine definition, an XML file, into a KVVMMachine.
//
// The reader accepts incomplete definitions: a missing attribute leaves the model's default, unknown elements and
// attributes are skipped, and an unknown enumeration text is read as a fallback (machine_types.h). Element names
// compare without case; attribute names and values compare with case. machine_check.h reports everything that the
// reader skips or corrects.
#pragma once

#include <string_view>

#include "companions/xml/xml_document.h"
#include "framework/object.h"
#include "framework/text.h"

class KVVMMachine;

// Limits far above any real machine, so that a small hostile file cannot use much memory. Elements beyond are skipped.
// An object of the model is larger than an empty element: with all limits reached, the model uses about 400 MB.
inline constexpr int kMachineMostChannels = 10000;
inline constexpr int kMachineMostTools = 100000;  // of all channels together
inline constexpr int kMachineMostShapes = 1000000;
inline constexpr int kMachineMostRepeatedIds = 1000000;  // IDs added to all lists by a NUM above their number of items

class KVSHARE_API KVVMMachineXMLReaderUtil : public CObject {
 public:
  KVVMMachineXMLReaderUtil() { m_document.KeepPlaces(false); }
  ~KVVMMachineXMLReaderUtil() override;

  // Reads a definition file into the machine, which the caller owns. The paths of geometry files begin with the
  // machine's persistent path. Returns 1, or 0 if machine is null or the file cannot be read or parsed. Unusable
  // sections are skipped and are not a failure.
  int LoadFromFile(CString fileName, KVVMMachine* machine);
  // The same for the text of a definition in memory.
  int LoadFromMemory(std::string_view definition, KVVMMachine* machine);

  // Why the last load returned 0. Not changed by a call with a null machine.
  const KVXMLFailure& GetFailure() const { return m_document.LastFailure(); }

 private:
  int Load(KVXMLNode* root);

  KVXMLDocument m_document;
  KVVMMachine* m_pMachine = nullptr;  // the argument of the last load
  CString m_strFolder;
};
