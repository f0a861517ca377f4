// HostDrilling, an operation that drills in pecks. The indexer counts it as a HostOperation.
#pragma once

#include "host/document/operation_node.h"

namespace kestrova {

class HostDrilling : public HostOperation {
  DECLARE_SERIAL(HostDrilling)

 public:
  HostDrilling() = default;

  // The depth of one peck; 0: no pecks.
  double Peck() const { return m_peck; }
  void SetPeck(double peck) { m_peck = peck; }

  // Schema 1: the peck's depth, a double.
  void Serialize(CArchive& ar) override;
  void DumpData(FILE* file) override;
  CRuntimeClass* GetRuntimeClassForAutoIndexing() override { return RUNTIME_CLASS(HostOperation); }
  int CopyParameters(QFObject* source) override;
  QFObject* Clone() override;
  CString Facts() const override;
  void ListFacts(NodeFacts& facts) const override;

 protected:
  bool IsLike(const HostNode& other) const override;

 private:
  double m_peck = 0;
};

}  // namespace kestrova
