// HostTool, a cutting tool of the document. The operations that use it stand in its list of users.
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

  // Schema 1: kind, diameter and length, doubles. A loaded tool asks to be told when the whole document is in.
  void Serialize(CArchive& ar) override;
  // Each operation that uses the tool stands in its list once, whatever the order in which they were read.
  void OnPostLoadFromStorageNotify() override;
  void DumpData(FILE* file) override;
  // Tools are counted apart from what the part's nodes are counted by.
  CString GetRegisterNodeName() override { return _T("HostToolCrib"); }
  // A tool is there or not: operations are suppressed, not their tools.
  int CanSuppress() const override { return 0; }
  int CopyParameters(QFObject* source) override;
  QFObject* Clone() override;
  LinkFaults MendLinks(const HostDocument& document) override;
  CString Facts() const override;

 protected:
  bool IsLike(const HostNode& other) const override;

 private:
  ToolKind m_kind = ToolKind::kFlatEndMill;
  bool m_awaitsNotice = false;
  double m_diameter = 0;
  double m_length = 0;
};

}  // namespace kestrova
