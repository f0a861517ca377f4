// Records of the save history built by hand, and the fixture of its tests.
#pragma once

#include <string>
#include <vector>

#include "framework/ob_list.h"
#include "share/env/app_env.h"
#include "share/env/product_edition.h"
#include "share/env/product_identity.h"
#include "share/objects/save_history.h"
#include "tests/objects/record_bytes.h"
#include "tests/objects/test_document.h"

namespace kvtest {

// The values that the present build writes, except user and stamp.
struct HistoryFields {
  std::u16string major = u"2024";
  std::u16string servicePack = u"SP4";
  std::u16string build = u"2024/0826";
  double storage = 38.0;
  std::u16string dateAndTime = u"08/26/2024::09:30";
  std::u16string user = u"eve";
  int saves = 7;
  std::u16string edition = u"Standard";
  std::u16string info = u"";
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

// A fresh environment with the language's texts, and a document.
class History : public testing::Test {
 protected:
  void SetUp() override {
    static const bool kLinked = (InitShareDll(), true);  // the language's texts
    ASSERT_TRUE(kLinked);
    CloseAppEnv();
    SetRunningModule(KV_MODULE_UNKNOWN);
    m_user = AppEnv()->GetUserNameW();
  }
  void TearDown() override { CloseAppEnv(); }

  // The values that the present build writes; tests change some of them.
  HistoryFields Present() const {
    HistoryFields fields;
    fields.user = m_user.View();
    return fields;
  }
  // A manager loaded from a document with these records.
  static std::unique_ptr<QFDocSrHistoryMngr> LoadedWith(const std::vector<HistoryFields>& records) {
    return LoadedObject<QFDocSrHistoryMngr>(ManagerOf(records));
  }
  static std::vector<QFDocSrHistory*> Records(const QFDocSrHistoryMngr& manager) {
    CObList list;
    manager.GetAllHistoryObjects(list);
    std::vector<QFDocSrHistory*> records;
    for (POSITION at = list.GetHeadPosition(); at;) records.push_back(static_cast<QFDocSrHistory*>(list.GetNext(at)));
    return records;
  }
  static std::string Saves(const QFDocSrHistoryMngr& manager) {
    std::string text;
    for (const QFDocSrHistory* record : Records(manager)) text += ToUtf8(record->GetNumSaves()) + " ";
    return text;
  }

  TestDocument m_document;
  CString m_user;
};

}  // namespace kvtest
