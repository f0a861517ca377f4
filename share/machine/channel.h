// CQVMChannel, one channel of a machine: its tool target (a turret or a head) with the turret's stations, and its two
// fixtures.
//
// Filled by the reader or a caller, then read; no lock. Fixture indices are 0 and 1, for the IDs 1 and 2 of a
// definition. With any other index a getter gives the default (status 0, direction CM_DIR_NONE, component 0.0) and a
// setter does nothing.
#pragma once

#include "companions/geometry/vectors.h"
#include "framework/ob_list.h"
#include "framework/object.h"
#include "framework/text.h"
#include "share/machine/machine_nodes.h"
#include "share/machine/machine_types.h"

// The tool side of a channel.
struct KVSHARE_API CQVMToolData {
  CQVMToolData() = default;
  // Deletes the tool nodes.
  ~CQVMToolData();
  CQVMToolData(const CQVMToolData&) = delete;
  CQVMToolData& operator=(const CQVMToolData&) = delete;

  MDTurretType m_nToolTarget = MD_TURRET_NONE;
  int m_nTurretNum = 1;
  int m_nStations = 0;
  int m_bFrontTurret = 0;                  // see CQVMChannel::SetToolTarget
  CMDirType m_nTurretDir = CM_DIR_PLUS_Z;  // axis about which the turret indexes
  double m_dTurretDiam = 0.0;
  FRVector m_toolGauge;
  CMDirType m_n4thAxisDir = CM_DIR_NONE;
  CMDirType m_n5thAxisDir = CM_DIR_NONE;
  CObList m_toolNodes;  // CQVMToolNode, owned
};

// One fixture of a channel.
struct CQVMFixtureData {
  int m_nStatus = 0;  // 1 when the fixture exists
  CMDirType m_n4thAxisDir = CM_DIR_NONE;
  CMDirType m_n5thAxisDir = CM_DIR_NONE;
  FRVector m_offset;
  FRVector m_4thVector;
  FRVector m_5thVector;
  FRVector m_4thBase;
  FRVector m_5thBase;
};

class KVSHARE_API CQVMChannel : public CObject {
 public:
  static constexpr int kFixtures = 2;

  CQVMChannel() = default;
  explicit CQVMChannel(int channelNum) : m_nChannelNum(channelNum) {}
  ~CQVMChannel() override;

  // Sets the channel number and nothing else.
  void InitializeData(int channelNum) { m_nChannelNum = channelNum; }
  void SetChannelNum(int channelNum) { m_nChannelNum = channelNum; }
  int GetChannelNum() const { return m_nChannelNum; }
  const CString& GetName() const { return m_strName; }
  void SetName(const CString& name) { m_strName = name; }

  // Tool side. SetToolTarget also sets the front turret flag if the channel is already named "Front1" or "Front2", in
  // any case; nothing ever clears the flag, so the order of name and target counts. That is required as it stands.
  void SetToolTarget(MDTurretType target);
  MDTurretType GetToolTarget() const { return m_tool.m_nToolTarget; }
  int GetIsFrontTurret() const { return m_tool.m_bFrontTurret; }
  void SetTurretNum(int number) { m_tool.m_nTurretNum = number; }
  int GetTurretNum() const { return m_tool.m_nTurretNum; }
  void SetNumStations(int stations) { m_tool.m_nStations = stations; }
  int GetNumStations() const { return m_tool.m_nStations; }
  void SetTurretDiam(double diameter) { m_tool.m_dTurretDiam = diameter; }
  double GetTurretDiam() const { return m_tool.m_dTurretDiam; }
  void SetTurretDirType(CMDirType direction) { m_tool.m_nTurretDir = direction; }
  CMDirType GetTurretDirType() const { return m_tool.m_nTurretDir; }
  void Set4thAxisToolDirType(CMDirType direction) { m_tool.m_n4thAxisDir = direction; }
  CMDirType Get4thAxisToolDirType() const { return m_tool.m_n4thAxisDir; }
  void Set5thAxisToolDirType(CMDirType direction) { m_tool.m_n5thAxisDir = direction; }
  CMDirType Get5thAxisToolDirType() const { return m_tool.m_n5thAxisDir; }
  void SetToolGaugeX(double length) { m_tool.m_toolGauge.set_x(length); }
  void SetToolGaugeY(double length) { m_tool.m_toolGauge.set_y(length); }
  void SetToolGaugeZ(double length) { m_tool.m_toolGauge.set_z(length); }
  double GetToolGaugeX() const { return m_tool.m_toolGauge.x(); }
  double GetToolGaugeY() const { return m_tool.m_toolGauge.y(); }
  double GetToolGaugeZ() const { return m_tool.m_toolGauge.z(); }

  // Stations. AddToolNode appends a node and takes ownership; null is ignored. The look-ups find the first node whose
  // position is pos; an unknown position gives FRVector().
  void AddToolNode(CQVMToolNode* node);
  const CObList& GetToolNodes() const { return m_tool.m_toolNodes; }
  int GetIsRotateByVector() const { return m_tool.m_toolNodes.IsEmpty() ? 0 : 1; }
  FRVector GetAttachVectorX(int pos) const;
  FRVector GetAttachLocation(int pos) const;
  // The attach vector, reversed when the tool gauge's X is 0.0 or more. Exactly 0.0 reverses too: required.
  FRVector GetToolVectorX(int pos) const;
  // The same for a node that is at hand; null stands for an unknown position.
  FRVector GetToolVectorX(const CQVMToolNode* node) const;

  // Fixtures.
  void SetFixtureStatus(int index, int status);
  int GetFixtureStatus(int index) const;
  void Set4thAxisFixtureDirType(CMDirType direction, int index);
  CMDirType Get4thAxisFixtureDirType(int index) const;
  void Set5thAxisFixtureDirType(CMDirType direction, int index);
  CMDirType Get5thAxisFixtureDirType(int index) const;

  // One component of one vector of a fixture; the last argument is the fixture index.
  void SetFixtureXOffset(double value, int index) { SetComponent(index, &CQVMFixtureData::m_offset, 0, value); }
  void SetFixtureYOffset(double value, int index) { SetComponent(index, &CQVMFixtureData::m_offset, 1, value); }
  void SetFixtureZOffset(double value, int index) { SetComponent(index, &CQVMFixtureData::m_offset, 2, value); }
  double GetFixtureXOffset(int index) const { return Component(index, &CQVMFixtureData::m_offset, 0); }
  double GetFixtureYOffset(int index) const { return Component(index, &CQVMFixtureData::m_offset, 1); }
  double GetFixtureZOffset(int index) const { return Component(index, &CQVMFixtureData::m_offset, 2); }
  void SetFixture4thXVector(double value, int index) { SetComponent(index, &CQVMFixtureData::m_4thVector, 0, value); }
  void SetFixture4thYVector(double value, int index) { SetComponent(index, &CQVMFixtureData::m_4thVector, 1, value); }
  void SetFixture4thZVector(double value, int index) { SetComponent(index, &CQVMFixtureData::m_4thVector, 2, value); }
  double GetFixture4thXVector(int index) const { return Component(index, &CQVMFixtureData::m_4thVector, 0); }
  double GetFixture4thYVector(int index) const { return Component(index, &CQVMFixtureData::m_4thVector, 1); }
  double GetFixture4thZVector(int index) const { return Component(index, &CQVMFixtureData::m_4thVector, 2); }
  void SetFixture5thXVector(double value, int index) { SetComponent(index, &CQVMFixtureData::m_5thVector, 0, value); }
  void SetFixture5thYVector(double value, int index) { SetComponent(index, &CQVMFixtureData::m_5thVector, 1, value); }
  void SetFixture5thZVector(double value, int index) { SetComponent(index, &CQVMFixtureData::m_5thVector, 2, value); }
  double GetFixture5thXVector(int index) const { return Component(index, &CQVMFixtureData::m_5thVector, 0); }
  double GetFixture5thYVector(int index) const { return Component(index, &CQVMFixtureData::m_5thVector, 1); }
  double GetFixture5thZVector(int index) const { return Component(index, &CQVMFixtureData::m_5thVector, 2); }
  void SetFixture4thBaseXOffset(double value, int index) { SetComponent(index, &CQVMFixtureData::m_4thBase, 0, value); }
  void SetFixture4thBaseYOffset(double value, int index) { SetComponent(index, &CQVMFixtureData::m_4thBase, 1, value); }
  void SetFixture4thBaseZOffset(double value, int index) { SetComponent(index, &CQVMFixtureData::m_4thBase, 2, value); }
  double GetFixture4thBaseXOffset(int index) const { return Component(index, &CQVMFixtureData::m_4thBase, 0); }
  double GetFixture4thBaseYOffset(int index) const { return Component(index, &CQVMFixtureData::m_4thBase, 1); }
  double GetFixture4thBaseZOffset(int index) const { return Component(index, &CQVMFixtureData::m_4thBase, 2); }
  void SetFixture5thBaseXOffset(double value, int index) { SetComponent(index, &CQVMFixtureData::m_5thBase, 0, value); }
  void SetFixture5thBaseYOffset(double value, int index) { SetComponent(index, &CQVMFixtureData::m_5thBase, 1, value); }
  void SetFixture5thBaseZOffset(double value, int index) { SetComponent(index, &CQVMFixtureData::m_5thBase, 2, value); }
  double GetFixture5thBaseXOffset(int index) const { return Component(index, &CQVMFixtureData::m_5thBase, 0); }
  double GetFixture5thBaseYOffset(int index) const { return Component(index, &CQVMFixtureData::m_5thBase, 1); }
  double GetFixture5thBaseZOffset(int index) const { return Component(index, &CQVMFixtureData::m_5thBase, 2); }

 private:
  static bool IsFixture(int index) { return index >= 0 && index < kFixtures; }
  const CQVMToolNode* FindToolNode(int pos) const;
  void SetComponent(int index, FRVector CQVMFixtureData::*vector, int axis, double value) {
    if (IsFixture(index)) (m_fixtures[index].*vector)[axis] = value;
  }
  double Component(int index, FRVector CQVMFixtureData::*vector, int axis) const {
    return IsFixture(index) ? (m_fixtures[index].*vector)[axis] : 0.0;
  }

  int m_nChannelNum = 1;
  CString m_strName;
  CQVMToolData m_tool;
  CQVMFixtureData m_fixtures[kFixtures];
};
