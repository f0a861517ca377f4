// CDaoRecordset, the records that a query gives; CDaoFieldExchange, the way of a column's value into a variable or
// back.
//
//   CDaoRecordset records(&database);
//   records.Open(_T("SELECT [path] FROM Paths;"));
//   if (records.GetRecordCount() > 0) {
//     CDaoFieldExchange exchange(CDaoFieldExchange::StoreField);
//     records.DFX_Text(&exchange, _T("path"), path);
//     records.Update();
//   }
//
// What fails throws CDaoException. Values are texts as the driver writes them.
#pragma once

#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "companions/database/database.h"

class KVSHARE_API CDaoFieldExchange {
 public:
  enum Operation { LoadField, StoreField };
  explicit CDaoFieldExchange(Operation operation) : m_nOperation(operation) {}

  Operation m_nOperation;
};

class KVSHARE_API CDaoRecordset {
 public:
  enum CursorLocation { useServer = 2, useClient = 3 };

  // On an open database, which must outlive it.
  explicit CDaoRecordset(CDaoDatabase* database);
  ~CDaoRecordset();
  CDaoRecordset(const CDaoRecordset&) = delete;
  CDaoRecordset& operator=(const CDaoRecordset&) = delete;

  // Kept only: the records are always read at once, which is what a cursor of the client means.
  void SetCursorLocation(CursorLocation location) { m_nCursorLocation = location; }
  CursorLocation GetCursorLocation() const { return m_nCursorLocation; }
  // The most records that the next Open reads; more are left out, which HasMore tells.
  void SetMostRecords(LONG records) { m_nMostRecords = records; }
  // The most bytes of UTF-8 that its values may have together, 16 more for each value; what needs more fails.
  void SetMostBytes(std::size_t bytes) { m_nMostBytes = bytes; }

  // Runs a query and stands on its first record. A statement that gives no records makes an empty set without fields.
  // A record with more than kMostFieldBytes in one field fails. After a failure the set is closed.
  void Open(const CString& sql);
  bool IsOpen() const { return m_bOpen; }
  void Close();
  static constexpr std::size_t kMostFieldBytes = std::size_t{16} << 20;

  LONG GetRecordCount() const { return LONG(m_Records.size()); }
  bool HasMore() const { return m_bMore; }
  bool IsEOF() const { return m_nCurrent >= m_Records.size(); }
  void MoveNext() { m_nCurrent += !IsEOF(); }

  int GetFieldCount() const { return int(m_Fields.size()); }
  const CString& GetFieldName(int field) const { return m_Fields[std::size_t(field)].name; }
  bool IsFieldNumeric(int field) const { return m_Fields[std::size_t(field)].numeric; }
  // Of the current record; none for NULL.
  const std::optional<CString>& GetFieldValue(int field) const;

  // Copies a column of the current record to the variable, NULL as an empty text; or notes the variable's value for
  // Update. Column names are taken without case and without brackets.
  void DFX_Text(const CDaoFieldExchange* exchange, const CString& column, CString& value);
  // Writes what was noted into the current record, if the query was a SELECT from one table: the record is found by the
  // values that were read of it. Fails if it isn't there any more as it was, and if nothing may be written.
  void Update();

 private:
  struct Field {
    CString name;
    bool numeric;
  };
  using Record = std::vector<std::optional<CString>>;

  std::size_t FieldOf(const CString& column) const;

  CDaoDatabase* m_pDatabase;
  CursorLocation m_nCursorLocation = useServer;
  LONG m_nMostRecords = 1'000'000;
  std::size_t m_nMostBytes = std::size_t{256} << 20;
  bool m_bOpen = false;
  bool m_bMore = false;
  CString m_Table;  // that the records are of; empty if that can't be told
  std::vector<Field> m_Fields;
  std::vector<Record> m_Records;
  std::size_t m_nCurrent = 0;
  std::vector<std::pair<std::size_t, CString>> m_Noted;  // field and value
};
