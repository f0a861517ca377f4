// The INI files of the product: QFShopFloorINIHandler for the exchange files of the shop floor, QFTBMINIHandler for the
// tables of features and strategies in the data folder. The form of the files is that of platform/profile.h.
//
// A handler keeps only the name of its file: every call reads or writes the file. Without a name every operation does
// nothing and returns an empty text or list. A missing or unreadable file counts as empty; a write creates it. A failed
// write is not reported. One thread at a time uses a handler.
#pragma once

#include "framework/list.h"
#include "framework/object.h"
#include "framework/text.h"

// The operations of both handlers.
class KVSHARE_API QFINIFile : public CObject {
 public:
  // The key's text, cut after 1,023 characters; empty for a missing key.
  CString GetValue(const CString& section, const CString& key) const;

  // Write the key's value. A double is written as "%0.6g": six significant digits, 1234567 as 1.23457e+06.
  void SetValue(const CString& section, const CString& key, const CString& value);
  void SetValue(const CString& section, const CString& key, int value);
  void SetValue(const CString& section, const CString& key, double value);

  // Append the names of the sections, or of a section's keys, in file order with duplicates. The names are cut after
  // 32,767 characters in all.
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

  // Immediately creates the file, or empties an existing one, as UTF-16 with a byte order mark.
  void SetINIFileName(const CString& fileName);
};

class KVSHARE_API QFTBMINIHandler : public QFINIFile {
 public:
  QFTBMINIHandler() = default;
  // Uses the name unchanged as a whole path, unlike SetINIFileName; kept for existing modules. The file does
  // not change.
  explicit QFTBMINIHandler(const CString& fileName) : QFINIFile(fileName) {}

  // Takes the name of a file in the folder KVTBM of the data folder. The file does not change.
  void SetINIFileName(const CString& fileName);

  // Calls SetINIFileName and returns the file's version by its section "StrategyCondition1": 2.3 with a "FeatureIndex",
  // else 2.0 with a "FeatureCatalog", else 1.0. Ignores the "Version" in "FileInformation"; kept for existing modules.
  // For an empty name it changes nothing and returns 0.0.
  double GetFileVersion(const CString& fileName);

 private:
  // The folder KVTBM below "KVDataPath" of this release's key: the user's value, or if it is empty the machine's.
  static CString GetBaseINIPathFromRegistry();
};
