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

#include <string>
#include <type_traits>

#include "framework/array.h"
#include "framework/rectangle.h"
#include "framework/time.h"
#include "platform/registry.h"
#include "share/core/base_object.h"

class QFSettingsKey;
class RegistryRun;

// A registry value: what a datum is saved as, or what was found.
struct StoredValue {
  DWORD type = REG_NONE;
  std::string bytes;
  bool operator==(const StoredValue&) const = default;
};

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
  // What SaveValueToRegistry writes, for those who write it by themselves. REG_NONE for a value without a datum.
  virtual StoredValue ToStored() const { return {}; }

 protected:
  QFSettingsValue() = default;

  // The run of values that the key is saving or restoring at this moment; null outside one.
  static RegistryRun* RunOf(QFSettingsKey* key);

  CString m_Name;

 private:
  friend class QFSettingsKey;
  QFSettingsKey* m_pOwner = nullptr;  // the key in whose list it stands
};

// What the typed classes share: the datum, and the four operations by its type. Given is the type in which the datum is
// handed in and out. The library makes it for the nine below alone.
template <class Datum, class Given = std::conditional_t<std::is_class_v<Datum>, const Datum&, Datum>>
class KVSHARE_API QFTypedValue : public QFSettingsValue {
 public:
  QFTypedValue(const CString& name, Given value) : QFSettingsValue(name) { SetValue(value); }
  Given GetValue() const { return m_Data; }
  void SetValue(Given value) {
    if constexpr (requires { m_Data.Copy(value); }) {
      m_Data.Copy(value);
    } else {
      m_Data = Datum(value);
    }
  }

  void Serialize(CArchive& ar) override;
  void DumpData(FILE* file) override;
  int SaveValueToRegistry(QFSettingsKey* key) override;
  int RestoreValueFromRegistry(QFSettingsKey* key) override;
  StoredValue ToStored() const override;

 protected:
  QFTypedValue() = default;

  Datum m_Data{};
};

extern template class KVSHARE_API QFTypedValue<double>;
extern template class KVSHARE_API QFTypedValue<CString>;
extern template class KVSHARE_API QFTypedValue<int>;
extern template class KVSHARE_API QFTypedValue<DWORD, unsigned long>;
extern template class KVSHARE_API QFTypedValue<CPoint>;
extern template class KVSHARE_API QFTypedValue<CRect>;
extern template class KVSHARE_API QFTypedValue<CTime>;
extern template class KVSHARE_API QFTypedValue<double, long double>;
extern template class KVSHARE_API QFTypedValue<CArray<int, int>>;

class KVSHARE_API QFDoubleValue : public QFTypedValue<double> {
  DECLARE_SERIAL(QFDoubleValue)

 public:
  using QFTypedValue::QFTypedValue;

 protected:
  QFDoubleValue() = default;
};

class KVSHARE_API QFStringValue : public QFTypedValue<CString> {
  DECLARE_SERIAL(QFStringValue)

 public:
  using QFTypedValue::QFTypedValue;

 protected:
  QFStringValue() = default;
};

class KVSHARE_API QFIntValue : public QFTypedValue<int> {
  DECLARE_SERIAL(QFIntValue)

 public:
  using QFTypedValue::QFTypedValue;

 protected:
  QFIntValue() = default;
};

// A colour with red in the low byte. Bits above the low 32 are dropped.
class KVSHARE_API QFColorValue : public QFTypedValue<DWORD, unsigned long> {
  DECLARE_SERIAL(QFColorValue)

 public:
  using QFTypedValue::QFTypedValue;

 protected:
  QFColorValue() = default;
};

// On restoring, a text that doesn't scan leaves the fields that the scan didn't reach as they were; the result is 1 all
// the same. QFRectValue does likewise.
class KVSHARE_API QFPointValue : public QFTypedValue<CPoint> {
  DECLARE_SERIAL(QFPointValue)

 public:
  using QFTypedValue::QFTypedValue;

 protected:
  QFPointValue() = default;
};

class KVSHARE_API QFRectValue : public QFTypedValue<CRect> {
  DECLARE_SERIAL(QFRectValue)

 public:
  using QFTypedValue::QFTypedValue;

 protected:
  QFRectValue() = default;
};

// Through the registry a time travels as the low 32 bits of its seconds, which come back without sign: -1 comes back as
// 4294967295. The format requires that; an archive keeps all 64 bits. A text that doesn't scan comes back as 0.
class KVSHARE_API QFTimeValue : public QFTypedValue<CTime> {
  DECLARE_SERIAL(QFTimeValue)

 public:
  using QFTypedValue::QFTypedValue;

 protected:
  QFTimeValue() = default;
};

// A real that the registry keeps as text, cut to six decimals. It has the width of a double in memory and in archives.
// A text that doesn't scan leaves it as it was. The banners of its dump name "QFDoubleStrValue": that is required.
class KVSHARE_API QFLongDoubleStrValue : public QFTypedValue<double, long double> {
  DECLARE_SERIAL(QFLongDoubleStrValue)

 public:
  using QFTypedValue::QFTypedValue;

 protected:
  QFLongDoubleStrValue() = default;
};

// Restoring from a registry value of a type other than REG_BINARY gives 1 and leaves the array alone: that is required.
class KVSHARE_API QFIntArrayValue : public QFTypedValue<CArray<int, int>> {
  DECLARE_SERIAL(QFIntArrayValue)

 public:
  using QFTypedValue::QFTypedValue;

 protected:
  QFIntArrayValue() = default;
};
