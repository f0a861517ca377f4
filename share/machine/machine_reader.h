// KVVMMachineXMLReaderUtil turns a machine definition, an XML file, into a filled KVVMMachine.
//
// The reader is forgiving by design: an attribute that is missing keeps the model's default, an element that it does
// not know is skipped, an enumeration text that it does not know falls back to a fixed value. Element names compare
// without case, values with it. What it passes over in silence is reported by machine_check.h; what it knows stands in
// the table of machine_grammar.h.
#pragma once

#include <string_view>

#include "companions/xml/xml_document.h"
#include "framework/object.h"
#include "framework/text.h"

class KVVMMachine;

// Bounds far above any machine, so that a small hostile file can't ask for much memory. What is beyond them is skipped.
inline constexpr int kMachineMostChannels = 10000;
inline constexpr int kMachineMostTools = 100000;  // of all channels together
inline constexpr int kMachineMostShapes = 1000000;
inline constexpr int kMachineMostRepeatedIds = 1000000;  // IDs that lists gain from a NUM above their number of items

class KVSHARE_API KVVMMachineXMLReaderUtil : public CObject {
 public:
  KVVMMachineXMLReaderUtil() { m_document.KeepPlaces(false); }
  ~KVVMMachineXMLReaderUtil() override;

  // Reads a definition file into the machine, which the caller owns; geometry files lie in the machine's persistent
  // path. 1, or 0 for a null machine or a file that can't be read or parsed. Sections that can't be used don't fail.
  int LoadFromFile(CString fileName, KVVMMachine* machine);
  // The same for the text of a definition in memory.
  int LoadFromMemory(std::string_view definition, KVVMMachine* machine);

  // Why the last load gave 0; of a null machine: nothing.
  const KVXMLFailure& GetFailure() const { return m_document.LastFailure(); }

 private:
  int Load(KVXMLNode* root);

  KVXMLDocument m_document;
  KVVMMachine* m_pMachine = nullptr;  // being filled; null until loading begins
  CString m_strFolder;
};
