// The leaves of a settings tree: QFSettingsValue, a name, and nine typed classes that add one datum each.
//
// A value lives in a QFSettingsKey, which owns it, and goes to three places: a document's archive, the registry (one
// registry value of the same name, under its key's path), and dumps. The registry operations give 1 or 0, report
// nothing and throw nothing; a failed restore leaves the datum as it was. They open and close the key by themselves. A
// null key gives 0. Values have no lock: like their tree, they are used by one thread at a time; several may read.
//
//   class                  datum                    registry                              archive, behind the name
//   QFDoubleValue          double                   REG_BINARY, 8 bytes                   8 bytes
//   QFStringValue          CString                  REG_SZ with terminator                wide text
//   QFIntValue             int                      REG_DWORD                             4 bytes
//   QFColorValue           0x00BBGGRR, 32 bits      REG_DWORD                             4 bytes
//   QFPointValue           CPoint                   REG_SZ "%ld %ld"                      x, y, 4 bytes each
//   QFRectValue            CRect                    REG_SZ "%ld %ld %ld %ld"              left, top, right, bottom
//   QFTimeValue            CTime                    REG_SZ "%ld", the low 32 bits         the operators of CTime
//   QFLongDoubleStrValue   double                   REG_SZ "%lf", so six decimals         8 bytes
//   QFIntArrayValue        CArray<int, int>         REG_BINARY, 4 bytes an element        32-bit count, 4 bytes each
#pragma once

#include "framework/array.h"
#include "framework/rectangle.h"
#include "framework/time.h"
#include "share/objects/base_object.h"

class QFSettingsKey;

class KVSHARE_API QFSettingsValue : public QFBaseObject {
  DECLARE_SERIAL(QFSettingsValue)

 public:
  explicit QFSettingsValue(const CString& name) : m_Name(name) {}

  const CString& GetName() const { return m_Name; }

  // The record of QFBaseObject, then the name. The typed classes add their datum. Raises what the archive raises.
  void Serialize(CArchive& ar) override;
  // Prints the name. The typed classes print their datum and not the name: that is required.
  void DumpData(FILE* file) override;

  // Writes the datum under the key's path, which is created if missing. 1 if written. A value without a datum gives 0.
  virtual int SaveValueToRegistry(QFSettingsKey* key);
  // Reads the datum; creates no registry key. 1 if read.
  virtual int RestoreValueFromRegistry(QFSettingsKey* key);

 protected:
  QFSettingsValue() = default;

  // What the typed classes are built from. The type of a stored value is not looked at.
  int SaveBytes(QFSettingsKey* key, DWORD type, const void* bytes, DWORD size) const;
  int SaveText(QFSettingsKey* key, const CString& text) const;
  // Fails if the stored value is longer than size.
  int RestoreBytes(QFSettingsKey* key, void* bytes, DWORD size) const;
  // Reads up to the first terminator.
  int RestoreText(QFSettingsKey* key, CString& text) const;

  CString m_Name;

 private:
  friend class QFSettingsKey;
  QFSettingsKey* m_pOwner = nullptr;  // the key in whose list it stands
};

class KVSHARE_API QFDoubleValue : public QFSettingsValue {
  DECLARE_SERIAL(QFDoubleValue)

 public:
  QFDoubleValue(const CString& name, double value) : QFSettingsValue(name), m_Data(value) {}
  double GetValue() const { return m_Data; }
  void SetValue(double value) { m_Data = value; }

  void Serialize(CArchive& ar) override;
  void DumpData(FILE* file) override;
  int SaveValueToRegistry(QFSettingsKey* key) override;
  int RestoreValueFromRegistry(QFSettingsKey* key) override;

 protected:
  QFDoubleValue() = default;
  double m_Data = 0;
};

class KVSHARE_API QFStringValue : public QFSettingsValue {
  DECLARE_SERIAL(QFStringValue)

 public:
  QFStringValue(const CString& name, const CString& value) : QFSettingsValue(name), m_Data(value) {}
  const CString& GetValue() const { return m_Data; }
  void SetValue(const CString& value) { m_Data = value; }

  void Serialize(CArchive& ar) override;
  void DumpData(FILE* file) override;
  int SaveValueToRegistry(QFSettingsKey* key) override;
  int RestoreValueFromRegistry(QFSettingsKey* key) override;

 protected:
  QFStringValue() = default;
  CString m_Data;
};

class KVSHARE_API QFIntValue : public QFSettingsValue {
  DECLARE_SERIAL(QFIntValue)

 public:
  QFIntValue(const CString& name, int value) : QFSettingsValue(name), m_Data(value) {}
  int GetValue() const { return m_Data; }
  void SetValue(int value) { m_Data = value; }

  void Serialize(CArchive& ar) override;
  void DumpData(FILE* file) override;
  int SaveValueToRegistry(QFSettingsKey* key) override;
  int RestoreValueFromRegistry(QFSettingsKey* key) override;

 protected:
  QFIntValue() = default;
  int m_Data = 0;
};

// A colour with red in the low byte. Bits above the low 32 are dropped.
class KVSHARE_API QFColorValue : public QFSettingsValue {
  DECLARE_SERIAL(QFColorValue)

 public:
  QFColorValue(const CString& name, unsigned long value) : QFSettingsValue(name), m_Data(DWORD(value)) {}
  unsigned long GetValue() const { return m_Data; }
  void SetValue(unsigned long value) { m_Data = DWORD(value); }

  void Serialize(CArchive& ar) override;
  void DumpData(FILE* file) override;
  int SaveValueToRegistry(QFSettingsKey* key) override;
  int RestoreValueFromRegistry(QFSettingsKey* key) override;

 protected:
  QFColorValue() = default;
  DWORD m_Data = 0;
};

// On restoring, a text that doesn't scan leaves the fields that the scan didn't reach as they were; the result is 1 all
// the same. QFRectValue does likewise.
class KVSHARE_API QFPointValue : public QFSettingsValue {
  DECLARE_SERIAL(QFPointValue)

 public:
  QFPointValue(const CString& name, const CPoint& value) : QFSettingsValue(name), m_Data(value) {}
  const CPoint& GetValue() const { return m_Data; }
  void SetValue(const CPoint& value) { m_Data = value; }

  void Serialize(CArchive& ar) override;
  void DumpData(FILE* file) override;
  int SaveValueToRegistry(QFSettingsKey* key) override;
  int RestoreValueFromRegistry(QFSettingsKey* key) override;

 protected:
  QFPointValue() = default;
  CPoint m_Data;
};

class KVSHARE_API QFRectValue : public QFSettingsValue {
  DECLARE_SERIAL(QFRectValue)

 public:
  QFRectValue(const CString& name, const CRect& value) : QFSettingsValue(name), m_Data(value) {}
  const CRect& GetValue() const { return m_Data; }
  void SetValue(const CRect& value) { m_Data = value; }

  void Serialize(CArchive& ar) override;
  void DumpData(FILE* file) override;
  int SaveValueToRegistry(QFSettingsKey* key) override;
  int RestoreValueFromRegistry(QFSettingsKey* key) override;

 protected:
  QFRectValue() = default;
  CRect m_Data;
};

// Through the registry a time travels as the low 32 bits of its seconds, which come back without sign: -1 comes back as
// 4294967295. The format requires that; an archive keeps all 64 bits. A text that doesn't scan comes back as 0.
class KVSHARE_API QFTimeValue : public QFSettingsValue {
  DECLARE_SERIAL(QFTimeValue)

 public:
  QFTimeValue(const CString& name, const CTime& value) : QFSettingsValue(name), m_Data(value) {}
  const CTime& GetValue() const { return m_Data; }
  void SetValue(const CTime& value) { m_Data = value; }

  void Serialize(CArchive& ar) override;
  void DumpData(FILE* file) override;
  int SaveValueToRegistry(QFSettingsKey* key) override;
  int RestoreValueFromRegistry(QFSettingsKey* key) override;

 protected:
  QFTimeValue() = default;
  CTime m_Data;
};

// A real that the registry keeps as text, cut to six decimals. It has the width of a double in memory and in archives.
// A text that doesn't scan leaves it as it was.
class KVSHARE_API QFLongDoubleStrValue : public QFSettingsValue {
  DECLARE_SERIAL(QFLongDoubleStrValue)

 public:
  QFLongDoubleStrValue(const CString& name, long double value) : QFSettingsValue(name), m_Data(double(value)) {}
  long double GetValue() const { return m_Data; }
  void SetValue(long double value) { m_Data = double(value); }

  void Serialize(CArchive& ar) override;
  // The banners name the class "QFDoubleStrValue": that is required.
  void DumpData(FILE* file) override;
  int SaveValueToRegistry(QFSettingsKey* key) override;
  int RestoreValueFromRegistry(QFSettingsKey* key) override;

 protected:
  QFLongDoubleStrValue() = default;
  double m_Data = 0;
};

// Restoring from a registry value of a type other than REG_BINARY gives 1 and leaves the array alone: that is required.
class KVSHARE_API QFIntArrayValue : public QFSettingsValue {
  DECLARE_SERIAL(QFIntArrayValue)

 public:
  QFIntArrayValue(const CString& name, const CArray<int, int>& value) : QFSettingsValue(name) { m_Data.Copy(value); }
  const CArray<int, int>& GetValue() const { return m_Data; }
  void SetValue(const CArray<int, int>& value) { m_Data.Copy(value); }

  void Serialize(CArchive& ar) override;
  void DumpData(FILE* file) override;
  int SaveValueToRegistry(QFSettingsKey* key) override;
  int RestoreValueFromRegistry(QFSettingsKey* key) override;

 protected:
  QFIntArrayValue() = default;
  CArray<int, int> m_Data;
};
