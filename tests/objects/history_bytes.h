// Records of the save history built by hand.
#pragma once

#include "tests/objects/record_bytes.h"

namespace kvtest {

// The values that the present build writes, except user and stamp.
struct HistoryFields {
  Text major = _T("2024"), servicePack = _T("SP4"), build = _T("2024/0826");
  double storage = 38.0;
  Text dateAndTime = _T("08/26/2024::09:30"), user = _T("eve");
  int saves = 7;
  Text edition = _T("Standard"), info;
};

// Appends the fields after the class records.
inline RecordBytes& AddFields(RecordBytes& bytes, const HistoryFields& fields, int schema = 3) {
  bytes.Text(fields.major).Text(fields.servicePack).Text(fields.build).Double(fields.storage);
  bytes.Text(fields.dateAndTime).Text(fields.user).Raw(fields.saves);
  if (schema > 1) bytes.Text(fields.edition);
  if (schema > 2) bytes.Text(fields.info);
  return bytes;
}

// One record. Archive numbers: its class 1, the object 2, the base's class 3.
inline std::string RecordOf(const HistoryFields& fields, int schema = 3, bool base = true) {
  RecordBytes bytes;
  bytes.NewClass("QFDocSrHistory", schema).Class(1);
  if (base) bytes.NewClass("QFBaseObject", 2);
  return AddFields(bytes, fields, schema).Get();
}

// The start of a manager. Archive numbers: its class 1, the object 2, the base's class 3.
inline RecordBytes StartOfManager() {
  return RecordBytes().NewClass("QFDocSrHistoryMngr", 1).Class(1).NewClass("QFBaseObject", 2);
}

// A whole manager: the records' class has number 4, the records 5 and so on.
inline std::string ManagerOf(const std::vector<HistoryFields>& records) {
  RecordBytes bytes = StartOfManager().Word(int(records.size()));
  for (const HistoryFields& fields : records)
    AddFields((&fields == &records.front() ? bytes.NewClass("QFDocSrHistory", 3) : bytes.Class(4)).Class(4).Class(3),
              fields);
  return bytes.Get();
}

}  // namespace kvtest
