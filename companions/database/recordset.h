// CDaoRecordset, the result of a query; CDaoFieldExchange, which copies a column's value to a variable or back.
//
//   CDaoRecordset records(&database);
//   records.Open(_T("SELECT [path] FROM Paths;"));
//   if (records.GetRecordCount() > 0) {
//     CDaoFieldExchange exchange(CDaoFieldExchange::StoreField);
//     records.DFX_Text(&exchange, _T("path"), path);
//     records.Update();
//   }
//
// An operation that fails throws CDaoException. Values are texts in the driver's format.
#pragma once

#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "companions/database/database.h"

class KVSHARE_API CDaoFieldExchange {
 public:
  enum Operation : int { LoadField, StoreField };  // record to variable; variable to record
  explicit CDaoFieldExchange(Operation operation) : m_nOperation(operation) {}

  Operation m_nOperation;
};

class KVSHARE_API CDaoRecordset {
 public:
  enum CursorLocation : int { useServer = 2, useClient = 3 };

  // The database must be open at Open and must outlive the recordset.
  explicit CDaoRecordset(CDaoDatabase* database);
  ~CDaoRecordset();
  CDaoRecordset(const CDaoRecordset&) = delete;
  CDaoRecordset& operator=(const CDaoRecordset&) = delete;

  // The value is stored and has no effect: Open always reads all records, as a client-side cursor does.
  void SetCursorLocation(CursorLocation location) { m_nCursorLocation = location; }
  CursorLocation GetCursorLocation() const { return m_nCursorLocation; }
  // The maximum number of records that the next Open reads. HasMore returns whether there were more.
  void SetMostRecords(LONG records) { m_nMostRecords = records; }
  // The memory limit of the next Open: the bytes of all values as UTF-8 plus a fixed cost for each value. Open throws
  // if the records need more.
  void SetMostBytes(std::size_t bytes) { m_nMostBytes = bytes; }

  // Runs a query, reads its records and moves to the first one. A statement without a result gives an empty set without
  // fields. Throws if a field is longer than kMostFieldBytes. After a failure the recordset is closed.
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
  // The value in the current record; empty optional for NULL. Throws if there is no current record or no such field.
  const std::optional<CString>& GetFieldValue(int field) const;

  // LoadField copies a column of the current record to value; NULL becomes an empty text. StoreField keeps a copy of
  // value for Update. Column names compare without case, and brackets around them are ignored. Throws for an unknown
  // column.
  void DFX_Text(const CDaoFieldExchange* exchange, const CString& column, CString& value);
  // Writes the stored values to the current record with an UPDATE statement that selects the record by all values read
  // from it. Works for a SELECT from one table. Throws if the record has changed or gone meanwhile, if the table is
  // unknown, or if the database is open for reading only. Without stored values it does nothing.
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
  CString m_Table;  // the table of the records; empty if unknown
  std::vector<Field> m_Fields;
  std::vector<Record> m_Records;
  std::size_t m_nCurrent = 0;
  std::vector<std::pair<std::size_t, CString>> m_Stored;  // field index and value, for Update
};
