// The leaves of a settings tree: QFSettingsValue has a name; nine typed classes add a datum each.
//
// A QFSettingsKey owns its values. A value can be saved to a document's archive and to the registry (one registry value
// of the same name, at the key's path), and printed into dumps. The registry operations return 1 or 0 and throw
// nothing; they open and close the registry key themselves. A failed restore leaves the datum unchanged. A null key
// gives 0. Values have no lock: several threads may read a tree while no thread changes it.
//
//   class                  datum                    registry                              archive, after the name
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
class RegistryBatch;

// The type and the bytes of a registry value.
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

  // The record of QFBaseObject, then the name; the typed classes add their datum. Throws the archive's exceptions.
  void Serialize(CArchive& ar) override;
  // Prints the name. The typed classes print their datum and not the name, which is kept for existing readers of dumps.
  void DumpData(FILE* file) override;

  // Writes the datum to the registry key of `key`, which is created if missing. 1 if written; 0 for a value without a
  // datum.
  virtual int SaveValueToRegistry(QFSettingsKey* key);
  // Reads the datum. Creates no registry key. 1 if read.
  virtual int RestoreValueFromRegistry(QFSettingsKey* key);
  // The type and bytes that SaveValueToRegistry writes. REG_NONE for a value without a datum.
  virtual StoredValue ToStored() const { return {}; }

 protected:
  QFSettingsValue() = default;

  // The batch in which the key is saving or restoring this value; null if it does neither.
  static RegistryBatch* BatchOf(QFSettingsKey* key);

  CString m_Name;

 private:
  friend class QFSettingsKey;
  QFSettingsKey* m_pOwner = nullptr;  // the key that has it in its list
};

// The base of the typed classes: the datum and the operations for its type. Parameter is the type of the datum in calls
// and results. The library instantiates it for the nine classes below only.
template <class Datum, class Parameter = std::conditional_t<std::is_class_v<Datum>, const Datum&, Datum>>
class KVSHARE_API QFTypedValue : public QFSettingsValue {
 public:
  QFTypedValue(const CString& name, Parameter value) : QFSettingsValue(name) { SetValue(value); }
  Parameter GetValue() const { return m_Data; }
  void SetValue(Parameter value) {
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

// A colour with red in the low byte. Only the low 32 bits are kept.
class KVSHARE_API QFColorValue : public QFTypedValue<DWORD, unsigned long> {
  DECLARE_SERIAL(QFColorValue)

 public:
  using QFTypedValue::QFTypedValue;

 protected:
  QFColorValue() = default;
};

// Restoring a text that is no point changes only the fields before the first error, and still gives 1. QFRectValue does
// the same. Kept for existing registries.
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

// The registry has the low 32 bits of the seconds, and restoring reads them as unsigned: -1 comes back as 4294967295.
// Kept for existing registries; an archive stores all 64 bits. A text that is no number gives 0.
class KVSHARE_API QFTimeValue : public QFTypedValue<CTime> {
  DECLARE_SERIAL(QFTimeValue)

 public:
  using QFTypedValue::QFTypedValue;

 protected:
  QFTimeValue() = default;
};

// A real number that the registry has as text, rounded to six decimals. In memory and in archives it is a double. A
// text that is no number leaves it unchanged. Its dump says "QFDoubleStrValue", kept for existing readers of dumps.
class KVSHARE_API QFLongDoubleStrValue : public QFTypedValue<double, long double> {
  DECLARE_SERIAL(QFLongDoubleStrValue)

 public:
  using QFTypedValue::QFTypedValue;

 protected:
  QFLongDoubleStrValue() = default;
};

// Restoring from a registry value of another type than REG_BINARY gives 1 and leaves the array unchanged, which is kept
// for existing registries.
class KVSHARE_API QFIntArrayValue : public QFTypedValue<CArray<int, int>> {
  DECLARE_SERIAL(QFIntArrayValue)

 public:
  using QFTypedValue::QFTypedValue;

 protected:
  QFIntArrayValue() = default;
};
