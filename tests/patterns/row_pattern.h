// RowPattern, a kind of pattern for tests: instances in a row along X, 10 apart, with a status for each. Patterned, a
// node that can have a pattern. Not in a nameless namespace: see tests/framework/archive_rollback_test.cpp.
#pragma once

#include <string>
#include <vector>

#include "share/patterns/pattern_manager.h"
#include "share/patterns/pattern_orders.h"

namespace kvtest {

class RowSkip : public QFPattInstToSkip {
  DECLARE_SERIAL(RowSkip)

 public:
  RowSkip() { ++live; }
  ~RowSkip() override { --live; }
  QFPattInstToSkip* Clone() override { return cloned ? new RowSkip : nullptr; }
  inline static int live = 0;
  inline static bool cloned = true;
};

class RowPattern : public QFPatternInfo {
  DECLARE_SERIAL(RowPattern)

 public:
  // A digit is the status of an instance.
  explicit RowPattern(const std::string& digits = "", bool noting = false) : statuses(digits) {
    ++live;
    if (noting) NoteInstancesChanged();
  }
  ~RowPattern() override {
    DeleteAllInstancesToSkip();
    --live;
  }
  int Rebuild() override { return 5; }
  QFPatternInfo* Clone() override {
    auto* copy = new RowPattern(statuses);
    copy->CopyParameters(this);
    return copy;
  }
  LONGLONG GetNumPatternInstances() override { return LONGLONG(statuses.size()); }
  QFeObjectPatternInstanceStatus GetTransfForInst(LONGLONG instance, FRTransf& transform) override {
    asked = instance;
    transform = GetTranslateTransf({10.0 * double(instance), 0, 0});
    return GetInstanceStatus(instance);
  }
  QFeObjectPatternInstanceStatus GetInstanceStatus(LONGLONG instance) override {
    ++statusCalls;
    return QFeObjectPatternInstanceStatus(instance < GetNumPatternInstances() ? statuses[std::size_t(instance)] - '0'
                                                                              : 0);
  }
  int SetInstanceStatus(int instance, QFeObjectPatternInstanceStatus status) override {
    statuses[std::size_t(instance)] = char('0' + status);
    if (GetInstanceChanges() != 0) NoteInstancesChanged();
    return 1;
  }
  QFeObjectPatternType GetPatternType() override { return QFeObjectPatternType(7); }
  void Skip(QFPattInstToSkip* entry) { m_InstToSkipList.AddTail(entry); }

  std::string statuses;
  LONGLONG asked = -1;
  int statusCalls = 0;
  inline static int live = 0;
};

class Patterned : public QFObject {
  DECLARE_SERIAL(Patterned)

 public:
  Patterned() { ++live; }
  ~Patterned() override { --live; }
  int GetIsPatternSupported() override { return 1; }
  int GetRefPointForPattern(FRPosition& position) override {
    position = FRPosition(1, 2, 3);
    return 0;  // ignored
  }
  int IsDragOverValid(QFObject* object, unsigned long flags) override {
    if (object == welcome) return int(flags);
    return QFObject::IsDragOverValid(object, flags);
  }
  int DoPaste(QFObject* object, QFObject* target, unsigned long flags) override {
    if (object == welcome) return int(flags) + (target == this);
    return QFObject::DoPaste(object, target, flags);
  }
  // The new pattern's description.
  RowPattern& Repeat(const std::string& digits, bool noting = false) {
    CreatePattern();
    auto* row = new RowPattern(digits, noting);
    GetPatternMgr()->SetPatternInfo(row, /*deleteOld=*/1);
    return *row;
  }

  QFObject* welcome = nullptr;
  inline static int live = 0;
};

struct Order : CArray<int, int&> {
  explicit Order(std::vector<int> numbers) {
    for (int& number : numbers) Add(number);
  }
};

}  // namespace kvtest
