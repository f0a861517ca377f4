// CQVMChannel, one channel of a machine: its tool target (a turret or a head) with the stations of the turret, and its
// two fixtures. Machine axes and units are those of the definition file: nothing here converts a length or an angle.
// The names in capitals are attributes of the definition (machine_reader.h).
//
//   auto* channel = new CQVMChannel(1);
//   channel->SetName(_T("Rear1"));                  // the name first: SetToolTarget uses it
//   channel->SetToolTarget(MD_TURRET);
//   channel->SetNumStations(12);
//   auto* station = new CQVMToolNode;               // at position 1
//   station->m_location = FRVector(0, 0, 150);
//   channel->AddToolNode(station);                  // the channel owns the station
//   channel->SetFixtureStatus(0, 1);                // index 0 is the fixture with ID 1
//   machine.AddChannel(channel);                    // the machine owns the channel
//
// Fill a channel on one thread; then any thread may read it. There is no lock. Fixture indices are 0 and 1, for ID 1
// and 2 of a definition. For any other index a getter returns the default (status 0, direction CM_DIR_NONE, component
// 0.0) and a setter does nothing. A channel can be neither copied nor moved.
#pragma once

#include "companions/geometry/vectors.h"
#include "framework/ob_list.h"
#include "framework/object.h"
#include "framework/text.h"
#include "share/machine/machine_nodes.h"
#include "share/machine/machine_types.h"

// The tool side of a channel. Each field keeps its default if the definition does not set it.
struct KVSHARE_API CQVMToolData {
  CQVMToolData() = default;
  // Deletes the stations.
  ~CQVMToolData();
  CQVMToolData(const CQVMToolData&) = delete;
  CQVMToolData& operator=(const CQVMToolData&) = delete;

  MDTurretType m_nToolTarget = MD_TURRET_NONE;  // TYPE; the default means no tool target
  int m_nTurretNum = 1;                         // ID of the tool target
  int m_nStations = 0;                          // STATIONS of a turret; the stations below may be fewer or more
  int m_bFrontTurret = 0;                       // 1 as CQVMChannel::SetToolTarget says; nothing here reads it
  CMDirType m_nTurretDir = CM_DIR_PLUS_Z;       // ROT_ABOUT: the axis about which the turret turns to a station
  double m_dTurretDiam = 0.0;                   // DIAM, a length
  FRVector m_toolGauge;                         // GAUGEX, GAUGEY, GAUGEZ: gauge lengths along X, Y and Z
  CMDirType m_n4thAxisDir = CM_DIR_NONE;        // ROT_4TH_ABOUT; the default means no such axis
  CMDirType m_n5thAxisDir = CM_DIR_NONE;        // ROT_5TH_ABOUT
  CObList m_toolNodes;                          // the stations: CQVMToolNode, owned, in file order
};

// One fixture of a channel. Vectors are (0, 0, 0) if the definition does not set them.
struct CQVMFixtureData {
  int m_nStatus = 0;                      // 1 if the channel has this fixture
  CMDirType m_n4thAxisDir = CM_DIR_NONE;  // ROT_4TH_ABOUT: the direction of the rotary axis
  CMDirType m_n5thAxisDir = CM_DIR_NONE;  // ROT_5TH_ABOUT
  FRVector m_offset;                      // XOFF, YOFF, ZOFF, lengths
  FRVector m_4thVector;                   // V4X, V4Y, V4Z: axis vector; by default the unit vector of ROT_4TH_ABOUT
  FRVector m_5thVector;                   // V5X, V5Y, V5Z
  FRVector m_4thBase;                     // BASE_X_4TH_AXIS ...: a point on the axis, lengths
  FRVector m_5thBase;                     // BASE_X_5TH_AXIS ...
};

class KVSHARE_API CQVMChannel : public CObject {
 public:
  static constexpr int kFixtures = 2;

  CQVMChannel() = default;
  explicit CQVMChannel(int channelNum) : m_nChannelNum(channelNum) {}
  ~CQVMChannel() override;

  // The number (ID) by which KVVMMachine::GetChannel finds the channel; 1 by default. InitializeData does the same as
  // SetChannelNum and resets nothing.
  void InitializeData(int channelNum) { m_nChannelNum = channelNum; }
  void SetChannelNum(int channelNum) { m_nChannelNum = channelNum; }
  int GetChannelNum() const { return m_nChannelNum; }
  const CString& GetName() const { return m_strName; }
  void SetName(const CString& name) { m_strName = name; }

  // The tool side. SetToolTarget also sets the front turret flag if the channel's name is "Front1" or "Front2" at the
  // call, compared without case. The flag is never cleared; kept for existing modules.
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

  // The stations. AddToolNode appends a station and takes ownership, or deletes it if it can't (std::bad_alloc); null
  // is ignored. Positions count from 1. If two stations have the same position, the getters use the first; for an
  // unknown position they return (0, 0, 0).
  void AddToolNode(CQVMToolNode* node);
  const CObList& GetToolNodes() const { return m_tool.m_toolNodes; }
  // 1 if the channel has stations.
  int GetIsRotateByVector() const { return m_tool.m_toolNodes.IsEmpty() ? 0 : 1; }
  // VECTOR_X and LOC of the station.
  FRVector GetAttachVectorX(int pos) const;
  FRVector GetAttachLocation(int pos) const;
  // VECTOR_X of the station; reversed if the tool gauge's X is 0.0 or more. The reversal at exactly 0.0 is kept for
  // existing definitions.
  FRVector GetToolVectorX(int pos) const;
  // The same for a station; null is treated as an unknown position.
  FRVector GetToolVectorX(const CQVMToolNode* node) const;

  // The fixtures. A direction sets no vector here; the reader does that.
  void SetFixtureStatus(int index, int status);
  int GetFixtureStatus(int index) const;
  void Set4thAxisFixtureDirType(CMDirType direction, int index);
  CMDirType Get4thAxisFixtureDirType(int index) const;
  void Set5thAxisFixtureDirType(CMDirType direction, int index);
  CMDirType Get5thAxisFixtureDirType(int index) const;

  // One component of one vector of a fixture (see CQVMFixtureData).
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
