// HostOperation, one pass of a tool over a feature.
#pragma once

#include "host/document/node.h"

namespace kestrova {

class HostTool;

class HostOperation : public HostNode {
  DECLARE_SERIAL(HostOperation)

 public:
  HostOperation() = default;
  // Leaves the tool.
  ~HostOperation() override;

  // The tool, which this operation uses and doesn't own; null for none. Setting it enters the operation among the
  // users of the new tool and takes it off the former one's.
  HostTool* Tool() const { return m_tool; }
  void SetTool(HostTool* tool);
  double Feed() const { return m_feed; }    // metres a minute
  double Speed() const { return m_speed; }  // turns a minute
  double Step() const { return m_step; }    // metres from pass to pass
  void SetCutting(double feed, double speed, double step);

  // Raised when the stock has changed: the toolpath has to be made anew. Made on the first request, owned by this node.
  CFlaggedError* GetFlag() override;
  bool IsFlagged() const { return m_flag && m_flag->GetFlag(); }

  // Schema 1: reference to the tool, feed, speed and step, doubles, then the flag's record.
  void Serialize(CArchive& ar) override;
  void DumpData(FILE* file) override;
  int CopyParameters(QFObject* source) override;
  QFObject* Clone() override;
  // What is locked stays as it is.
  int CanSuppress() const override { return !IsLocked() && HostNode::CanSuppress(); }
  // A tool that goes leaves the operation without one.
  int RemoveFromUserObjectsList(QFObject* object) override;
  // The parameter, which is an OperationCommand (host/jobs/operation_command.h), knows what to do; 5 without one.
  QFeThreadStatus HandleCommand(QFeCommandType type, unsigned context, void*& param) override;
  int IsRebuildReqOnStockChange() override { return 1; }
  int IsDirtyOnStockChange() override { return IsFlagged(); }
  void DropLinks() override;
  LinkFaults MendLinks(const HostDocument& document) override;
  const HostNode* UsedNode() const override;
  CString Facts() const override;

 protected:
  bool IsLike(const HostNode& other) const override;

 private:
  HostTool* m_tool = nullptr;
  double m_feed = 0;
  double m_speed = 0;
  double m_step = 0;
  std::unique_ptr<CFlaggedError> m_flag;  // null as long as it is down and nobody asks
};

}  // namespace kestrova
