// HostTool, a cutting tool of the document. Its list of users has the operations that use it.
#pragma once

#include "host/document/node.h"

namespace kestrova {

// Stored as 32 bits.
enum class ToolKind : int {
  kFlatEndMill = 0,
  kBallEndMill = 1,
  kDrill = 2,
  kCentreDrill = 3,
  kTap = 4,
};

// "flat end mill"; "unknown kind" for a number outside the table.
LPCTSTR TextOf(ToolKind kind);

class HostTool : public HostNode {
  DECLARE_SERIAL(HostTool)

 public:
  HostTool() = default;
  ~HostTool() override;

  ToolKind Kind() const { return m_kind; }
  double Diameter() const { return m_diameter; }
  double Length() const { return m_length; }
  void Set(ToolKind kind, double diameter, double length);

  // Schema 1: kind (32 bits), diameter and length (doubles). A loaded tool registers for the end of the load.
  void Serialize(CArchive& ar) override;
  // Removes duplicates from the users: a recycled operation that is read before its tool enters itself, and the tool's
  // record has it too.
  void OnPostLoadFromStorageNotify() override;
  void DumpData(FILE* file) override;
  // The indexer counts tools under this name, apart from the other nodes.
  CString GetRegisterNodeName() override { return _T("HostToolCrib"); }
  // Operations can be suppressed, tools cannot.
  int CanSuppress() const override { return 0; }
  int CopyParameters(QFObject* source) override;
  QFObject* Clone() override;
  LinkFaults RepairLinks(const HostDocument& document) override;
  CString Facts() const override;
  void ListFacts(NodeFacts& facts) const override;

 protected:
  bool IsLike(const HostNode& other) const override;

 private:
  ToolKind m_kind = ToolKind::kFlatEndMill;
  bool m_awaitsNotice = false;
  double m_diameter = 0;
  double m_length = 0;
};

}  // namespace kestrova
