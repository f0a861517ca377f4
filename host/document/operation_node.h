// HostOperation, the machining of a feature with a tool.
#pragma once

#include "host/document/node.h"

namespace kestrova {

class HostTool;

class HostOperation : public HostNode {
  DECLARE_SERIAL(HostOperation)

 public:
  HostOperation() = default;
  // Removes this operation from the users of its tool.
  ~HostOperation() override;

  // The tool, which this operation uses but does not own; null if there is none. SetTool moves the operation from the
  // users of the old tool to the users of the new one.
  HostTool* Tool() const { return m_tool; }
  void SetTool(HostTool* tool);
  double Feed() const { return m_feed; }    // metres per minute
  double Speed() const { return m_speed; }  // revolutions per minute
  double Step() const { return m_step; }    // metres between passes
  void SetCutting(double feed, double speed, double step);

  // The flag that is set when the stock has changed and the toolpath is outdated. Created on the first call; the node
  // owns it.
  CFlaggedError* GetFlag() override;
  bool IsFlagged() const { return m_flag && m_flag->GetFlag(); }

  // Schema 1: reference to the tool, feed, speed and step (doubles), record of the flag.
  void Serialize(CArchive& ar) override;
  void DumpData(FILE* file) override;
  int CopyParameters(QFObject* source) override;
  QFObject* Clone() override;
  // A locked operation cannot be suppressed.
  int CanSuppress() const override { return !IsLocked() && HostNode::CanSuppress(); }
  // Removing the tool leaves the operation without a tool.
  int RemoveFromUserObjectsList(QFObject* object) override;
  // Calls the parameter, an OperationCommand (operation_command.h); returns 5 for a null parameter.
  QFeThreadStatus HandleCommand(QFeCommandType type, unsigned context, void*& param) override;
  int IsRebuildReqOnStockChange() override { return 1; }
  int IsDirtyOnStockChange() override { return IsFlagged(); }
  void DropLinks() override;
  LinkFaults RepairLinks(const HostDocument& document) override;
  const HostNode* UsedNode() const override;
  CString Facts() const override;
  void ListFacts(NodeFacts& facts) const override;

 protected:
  bool IsLike(const HostNode& other) const override;

 private:
  HostTool* m_tool = nullptr;
  double m_feed = 0;
  double m_speed = 0;
  double m_step = 0;
  std::unique_ptr<CFlaggedError> m_flag;  // null before the first GetFlag, unless a loaded flag is set
};

}  // namespace kestrova
