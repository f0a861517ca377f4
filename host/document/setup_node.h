// HostSetup, one clamping of the part: the coordinate frame for machining everything below it.
#pragma once

#include "host/document/node.h"
#include "share/objects/param_helpers.h"

namespace kestrova {

class HostSetup : public HostNode {
  DECLARE_SERIAL(HostSetup)

 public:
  HostSetup() = default;

  QFSetupParamHelper& Frame() { return m_frame; }

  // Schema 1: record of the frame.
  void Serialize(CArchive& ar) override;
  void DumpData(FILE* file) override;
  const QFParamHelper* GetParamHelper() const override { return &m_frame; }
  int CopyParameters(QFObject* source) override;
  QFObject* Clone() override;
  CString Facts() const override;
  void ListFacts(NodeFacts& facts) const override;

 protected:
  bool IsLike(const HostNode& other) const override;

 private:
  QFSetupParamHelper m_frame;
};

// The setup that the node is below; null without one.
HostSetup* SetupOf(const QFObject& node);

}  // namespace kestrova
