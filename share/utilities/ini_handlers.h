// The INI files of the product: QFShopFloorINIHandler for the exchange files of the shop floor, QFTBMINIHandler for the
// tables of features and strategies in the data folder. The form of the files is that of platform/profile.h.
//
// A handler holds the name of its file and nothing else: every call goes to the file. Without a name every operation
// does nothing and gives an empty text or list. A file that is missing or can't be read is empty, a write makes it; one
// that fails goes unreported. One handler is used by one thread at a time.
#pragma once

#include "framework/list.h"
#include "framework/object.h"
#include "framework/text.h"

// What both handlers do.
class KVSHARE_API QFINIFile : public CObject {
 public:
  // The key's text, cut to 1,023 characters; empty if it is missing.
  CString GetValue(const CString& section, const CString& key) const;

  // A double is written in the format "%0.6g": six significant digits, 1234567 as 1.23457e+06.
  void SetValue(const CString& section, const CString& key, const CString& value);
  void SetValue(const CString& section, const CString& key, int value);
  void SetValue(const CString& section, const CString& key, double value);

  // Append the names of the sections, or of a section's keys, in the file's order with duplicates. Both lists are cut
  // where all names together pass 32,767 characters.
  void GetSections(CList<CString>& sections) const;
  void GetKeys(const CString& section, CList<CString>& keys) const;

  // Removes the section with all its keys.
  void RemoveSection(const CString& section);

 protected:
  QFINIFile() = default;
  explicit QFINIFile(const CString& fileName) : m_FileName(fileName) {}

  CString m_FileName;
};

class KVSHARE_API QFShopFloorINIHandler : public QFINIFile {
 public:
  QFShopFloorINIHandler() = default;
  explicit QFShopFloorINIHandler(const CString& fileName) { SetINIFileName(fileName); }

  // Makes the file, or empties one that is there, at once; it is UTF-16 with a mark.
  void SetINIFileName(const CString& fileName);
};

class KVSHARE_API QFTBMINIHandler : public QFINIFile {
 public:
  QFTBMINIHandler() = default;
  // Takes the name as it stands, unlike SetINIFileName: that is required. The file is left as it is.
  explicit QFTBMINIHandler(const CString& fileName) : QFINIFile(fileName) {}

  // A name in the folder KVTBM of the data folder. The file is left as it is.
  void SetINIFileName(const CString& fileName);

  // Goes on to the file of that name, as SetINIFileName does, and tells its generation by its section
  // "StrategyCondition1": 2.3 with a "FeatureIndex", else 2.0 with a "FeatureCatalog", else 1.0. 0.0 for an empty name,
  // which changes nothing. A file's own "Version" in "FileInformation" never counts: that is required.
  double GetFileVersion(const CString& fileName);

 private:
  // The folder KVTBM below "KVDataPath" of this release's key, the user's or else the machine's.
  static CString GetBaseINIPathFromRegistry();
};
