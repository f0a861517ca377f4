// KVFunctionLog: writes the inputs and outputs of a function and its time into a log file.
//
//   KVFunctionLog log(_T("PlanToolpath"));
//   log.AddInputValue(2, operations, passes);
//   ...
//   log.AddOutputValue(1, result);
//
// The destructor appends one block to kFunctionLogFile if the switch kFunctionLogSwitch is on at that moment
// (share/diagnostics/log_files.h); it reads the registry, so use no function log in a loop. One thread at a time may
// use an object. No call reports a failure; the destructor doesn't throw.
#pragma once

#include <algorithm>
#include <initializer_list>

#include "framework/list.h"
#include "framework/text.h"
#include "framework/time.h"

class KVSHARE_API KVFunctionLog {
 public:
  explicit KVFunctionLog(const CString& functionName);
  ~KVFunctionLog();
  KVFunctionLog(const KVFunctionLog&) = delete;
  KVFunctionLog& operator=(const KVFunctionLog&) = delete;

  // Append the first `count` of the integers.
  template <class... Integers>
  void AddInputValue(int count, Integers... values) {
    AddValues(m_InputValues, count, {long(values)...});
  }
  template <class... Integers>
  void AddOutputValue(int count, Integers... values) {
    AddValues(m_OutputValues, count, {long(values)...});
  }

 private:
  static void AddValues(CList<long>& list, int count, std::initializer_list<long> values);

  CString m_FunctionName;
  CList<long> m_InputValues;
  CList<long> m_OutputValues;
  CString m_LogText;
  CTime m_StartTime;
};
