// The named and numbered objects of a machine: CQVMShape, one solid of the machine, and CQVMToolNode, one station of a
// turret. CQVMBaseNode is their base.
//
// Lengths and angles are those of the definition; nothing converts units. Fill a node on one thread; then any thread
// may read it. There is no lock. Nodes are not archived. Fields keep the default shown here if the definition does not
// set them; the default of an FRVector is (0, 0, 0).
#pragma once

#include <utility>

#include "companions/geometry/vectors.h"
#include "framework/ob_list.h"
#include "framework/object.h"
#include "framework/text.h"
#include "share/machine/machine_types.h"

class KVSHARE_API CQVMBaseNode : public CObject {
 public:
  static constexpr int kNodeTag = 2;

  CQVMBaseNode() : CQVMBaseNode(kNodeTag) {}
  ~CQVMBaseNode() override;

  // The class of the node: 2 for CQVMBaseNode, 13 for CQVMShape, 11 for CQVMToolNode.
  int GetNodeTag() const { return m_nNodeTag; }
  const CString& GetName() const { return m_strName; }
  void SetName(CString name) { m_strName = std::move(name); }
  const CString& GetParentName() const { return m_strParentName; }
  void SetParentName(const CString& name) { m_strParentName = name; }
  // A shape's ID, or the position of a station.
  int GetID() const { return m_nID; }
  void SetID(int id) { m_nID = id; }

 protected:
  explicit CQVMBaseNode(int nodeTag) : m_nNodeTag(nodeTag) {}

 private:
  int m_nNodeTag;
  CString m_strName;
  CString m_strParentName;
  CString m_strThirdText;  // not used
  CObList m_children;      // not used; does not own its entries
  int m_nID = 0;
};

class KVSHARE_API CQVMShape : public CQVMBaseNode {
 public:
  static constexpr int kNodeTag = 13;

  CQVMShape() : CQVMBaseNode(kNodeTag) {}
  ~CQVMShape() override;

  CString m_strSpare;         // not used
  CString m_strPath;          // the path of the geometry file: the machine's folder followed by PATH
  int m_bHousing = 0;         // 1: part of the housing (HOUSING)
  int m_bCollisionCheck = 0;  // 1: included in collision checks (CCHECK)
  int m_bVisible = 1;         // 1: shown (VISIBLE)
  int m_nRed = 128;           // RGB as written; 0 to 255 is intended but not enforced
  int m_nGreen = 128;
  int m_nBlue = 128;
  int m_bTransparent = 0;                        // 1: TRANSPARENT
  int m_bMetallic = 0;                           // 1: METALLIC exists and is not empty
  CString m_strMetallic;                         // METALLIC as written
  CMParentType m_nParentType = CM_PARENT_FIXED;  // PTYPE: the axis or carrier that moves the shape
  FRVector m_homeXYZ;                            // HOME: home position of the linear axes
  FRVector m_offset;                             // OFFSET or ORIGIN_OFFSET
  FRVector m_spare;                              // not used
  FRVector m_minXYZ;                             // MIN and MAX: travel limits of the linear axes
  FRVector m_maxXYZ;
  FRVector m_homeABC;  // the same for the rotary axes: x is A, y is B, z is C
  FRVector m_minABC;
  FRVector m_maxABC;
};

class KVSHARE_API CQVMToolNode : public CQVMBaseNode {
 public:
  static constexpr int kNodeTag = 11;

  CQVMToolNode() : CQVMBaseNode(kNodeTag) { SetID(1); }
  ~CQVMToolNode() override;

  FRVector m_vectorX;           // VECTOR_X: the tool's X direction at this station
  FRVector m_vectorZ{0, 0, 1};  // VECTOR_Z: the tool's Z direction at this station
  FRVector m_location;          // LOC: the attach point of the station
};
