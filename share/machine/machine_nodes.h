// What has a name and a number in the machine tree: CQVMShape, one solid of the machine, and CQVMToolNode, one station
// of a turret, on their base CQVMBaseNode.
//
// Lengths and angles stand as they stand in the definition: nothing in this folder converts a unit. A node is filled by
// the reader and then only read; it has no lock. Nodes take no part in archives.
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

  // Which class the node is of: 2 for a bare node, 13 for a shape, 11 for a tool node.
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
  CString m_strThirdText;  // never set here
  CObList m_children;      // never filled here; entries would belong to somebody else
  int m_nID = 0;
};

class KVSHARE_API CQVMShape : public CQVMBaseNode {
 public:
  static constexpr int kNodeTag = 13;

  CQVMShape() : CQVMBaseNode(kNodeTag) {}
  ~CQVMShape() override;

  CString m_strSpare;         // never set here
  CString m_strPath;          // the geometry file: the machine's folder followed by PATH
  int m_bHousing = 0;         // part of the housing
  int m_bCollisionCheck = 0;  // takes part in collision checking
  int m_bVisible = 1;         // shown
  int m_nRed = 128;           // colour as written; 0 to 255 is meant and not enforced
  int m_nGreen = 128;
  int m_nBlue = 128;
  int m_bTransparent = 0;
  int m_bMetallic = 0;                           // METALLIC stands there and is not empty
  CString m_strMetallic;                         // METALLIC as written
  CMParentType m_nParentType = CM_PARENT_FIXED;  // the axis or carrier that moves the shape
  FRVector m_homeXYZ;
  FRVector m_offset;  // OFFSET and ORIGIN_OFFSET write the same field
  FRVector m_spare;   // never set here
  FRVector m_minXYZ;  // travel limits of the linear axes
  FRVector m_maxXYZ;
  FRVector m_homeABC;  // of the rotary axes: x holds A, y holds B, z holds C
  FRVector m_minABC;
  FRVector m_maxABC;
};

class KVSHARE_API CQVMToolNode : public CQVMBaseNode {
 public:
  static constexpr int kNodeTag = 11;

  CQVMToolNode() : CQVMBaseNode(kNodeTag) { SetID(1); }
  ~CQVMToolNode() override;

  FRVector m_vectorX;           // the tool's X direction at this station
  FRVector m_vectorZ{0, 0, 1};  // the tool's Z direction at this station
  FRVector m_location;          // attach point
};
