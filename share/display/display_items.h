// The items of a recording: one for each primitive that QFFileDisplay recorded, with the state of its moment.
//
// An item writes itself in two forms. Integers of the binary form have 4 bytes and doubles 8, little-endian:
//
//   common to all   type, colour, dashed, line width
//   fill items      then: fill, transparent, fill colour
//   1 line          start and end position
//   2 polyline      list of positions
//   3 ellipse       position, half width, half height in pixels
//   4 polygon       list of positions; the normals are not written
//   5 triangle      list of positions, list of normals
//   6 text          position, number of characters, as many zero bytes
//
// A position is the count 3 and three doubles; a list is its count and its elements, each as a position. The list of a
// triangle's normals has the count of the positions: missing normals repeat the last one, or are (0, 0, 0) if there is
// none, and normals beyond the count are not written. A reader of the text itself needs the text form.
//
// In the text form a position is a line of three numbers with up to six digits, and a list is a line "m_PtList size: 3"
// before its elements. A line "# dashed" or "# solid" precedes an item if its style is not that of the item written
// before it, by any recording of the process.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "companions/geometry/vectors.h"
#include "framework/text.h"

class CFont;

enum QFeDisplayItemType : int {
  QFeDisplayLine = 1,
  QFeDisplayPolyline = 2,
  QFeDisplayEllipse = 3,
  QFeDisplayPolygon = 4,
  QFeDisplayTriangle = 5,
  QFeDisplayText = 6,
};

class KVSHARE_API QFToolpathDisplayItem {
 public:
  explicit QFToolpathDisplayItem(int type) : m_nType(type) {}
  virtual ~QFToolpathDisplayItem();

  // Appends the item's bytes to both forms; the text is UTF-8. This class writes the common part.
  virtual void Write(std::string& binary, std::string& text) const;

  int m_nType;
  DWORD m_Color = 0;  // 0x00BBGGRR
  int m_bDashed = 0;
  int m_nLineWidth = 0;
};

class KVSHARE_API QFToolpathDisplayFillItem : public QFToolpathDisplayItem {
 public:
  using QFToolpathDisplayItem::QFToolpathDisplayItem;
  void Write(std::string& binary, std::string& text) const override;

  int m_bFill = 0;
  int m_bTransparent = 0;
  DWORD m_ColorFill = 0;
};

class KVSHARE_API QFToolpathDisplayLine : public QFToolpathDisplayItem {
 public:
  QFToolpathDisplayLine() : QFToolpathDisplayItem(QFeDisplayLine) {}
  void Write(std::string& binary, std::string& text) const override;

  FRPosition m_StartPos;
  FRPosition m_EndPos;
};

class KVSHARE_API QFToolpathDisplayPolyline : public QFToolpathDisplayItem {
 public:
  QFToolpathDisplayPolyline() : QFToolpathDisplayItem(QFeDisplayPolyline) {}
  void Write(std::string& binary, std::string& text) const override;

  std::vector<FRPosition> m_PtList;
};

class KVSHARE_API QFToolpathDisplayEllipse : public QFToolpathDisplayFillItem {
 public:
  QFToolpathDisplayEllipse() : QFToolpathDisplayFillItem(QFeDisplayEllipse) {}
  void Write(std::string& binary, std::string& text) const override;

  FRPosition m_stPos;
  int m_nPixelHorizontal = 0;
  int m_nPixelVertical = 0;
};

class KVSHARE_API QFToolpathDisplayPolygon : public QFToolpathDisplayFillItem {
 public:
  QFToolpathDisplayPolygon() : QFToolpathDisplayFillItem(QFeDisplayPolygon) {}
  void Write(std::string& binary, std::string& text) const override;

  std::vector<FRPosition> m_PtList;
  std::vector<FRUnitVector> m_PtNormalList;
};

class KVSHARE_API QFToolpathDisplayTriangle : public QFToolpathDisplayFillItem {
 public:
  QFToolpathDisplayTriangle() : QFToolpathDisplayFillItem(QFeDisplayTriangle) {}
  void Write(std::string& binary, std::string& text) const override;

  std::vector<FRPosition> m_PtList;
  std::vector<FRUnitVector> m_PtNormalList;
};

class KVSHARE_API QFToolpathDisplayText : public QFToolpathDisplayItem {
 public:
  QFToolpathDisplayText() : QFToolpathDisplayItem(QFeDisplayText) {}
  void Write(std::string& binary, std::string& text) const override;

  FRPosition m_StartPos;
  DWORD m_nCharCount = 0;
  CString m_Text;            // empty in an item that was read from the binary form
  CFont* m_pFont = nullptr;  // not owned and not written
};

// Shared, so that a module can keep items beyond the life of the recording.
using QFToolpathDisplayItems = std::vector<std::shared_ptr<QFToolpathDisplayItem>>;
