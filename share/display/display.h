// QFBaseDisplay, what every back end of a drawing implements, and QFDisplayList, a stored drawing. Modules draw through
// QFDisplayInfo (share/display/display_info.h), which owns the back end and the state and transforms the positions.
//
// A back end overrides what it can do; the operations of the base do nothing and return 0. The order of the virtual
// operations is part of the interface. Results are 1 for done. Positions are in the model's unit. A back end is used
// from one thread, that of the host's drawing; it has no lock.
#pragma once

#include <vector>

#include "companions/geometry/point_list.h"
#include "framework/list.h"
#include "framework/rectangle.h"
#include "framework/text.h"
#include "share/display/display_data.h"

// A drawing that a back end keeps to draw it again.
class KVSHARE_API QFDisplayList {
 public:
  QFDisplayList() = default;
  virtual ~QFDisplayList();
  QFDisplayList(const QFDisplayList&) = delete;
  QFDisplayList& operator=(const QFDisplayList&) = delete;

  // From Begin to End drawing is stored. Delete forgets it. Render draws it with its origin moved to the position.
  virtual int Begin();
  virtual int End();
  virtual int Delete();
  virtual int Render(const FRPosition& position);
};

class KVSHARE_API QFBaseDisplay {
 public:
  QFBaseDisplay() = default;
  virtual ~QFBaseDisplay();
  QFBaseDisplay(const QFBaseDisplay&) = delete;
  QFBaseDisplay& operator=(const QFBaseDisplay&) = delete;

  // Around the drawing of an object: takes over the state of the data (colour, width, style), and restores the former
  // one.
  virtual int InitialiseGraphics();
  virtual int UninitialiseGraphics();

  virtual void DrawLine(const FRPosition& from, const FRPosition& to);
  virtual void DrawArrow(const FRPosition& from, const FRPosition& to);
  // a and b are half widths; each back end says in which unit. The camera is the transform from the world to the
  // screen.
  virtual void DrawEllipse(const FRPosition& centre, double a, double b, const FRTransf& camera);
  virtual void DrawPlaneEllipse(const FRPosition& centre, double a, double b);
  // One normal for each point, or none.
  virtual void DrawTriangle(const CList<FRPosition>& points, const CList<FRUnitVector>& normals);
  virtual void DrawPolygon(const CList<FRPosition>& points, const CList<FRUnitVector>& normals);
  // Each point is divided by the scale and then goes through the transforms. A null list draws nothing.
  virtual void DrawPolyline(AFR_Lin_List*& points, double& scale, const QFDisplayTransforms& transforms);
  // Reserved: no back end has it.
  virtual void DrawPolyline(AFR_Lin_List*& points, double& scale, const QFDisplayTransforms& transforms, int reserved);
  // The mode is a primitive type of OpenGL, such as 3 for a line strip.
  virtual void DrawPolyline(const std::vector<FRPosition>& points, unsigned mode);
  virtual void DrawPolyline(const CList<FRPosition>& points, unsigned mode);
  virtual void DrawPolyline(const CList<FRPosition>& points);
  virtual void DrawText(const FRPosition& position, const CString& text);

  virtual void SetLineWidthOnlyByGLCall(int width);
  // Stores the style. Not 0 for dashed lines.
  virtual void SetLineStyle(int dashed);
  // 1 GDI, 2 OpenGL, 3 recording; 0 in the base.
  virtual int GetDisplayType() const;

  // Collect the start points of lines for a region and fill it.
  virtual void SetFillRegion(int on);
  virtual int FillRegion();
  // Clip to a rectangle in pixels.
  virtual void SetRectClipRegion(const CRect* rect);
  virtual int ClipRegion();
  // Between them drawing is hidden by what lies before it.
  virtual void BeginShadedDisplay();
  virtual void EndShadedDisplay();

  // A list for about that many primitives, which the caller owns; null if there is none: draw directly then.
  virtual QFDisplayList* GenerateDisplayList(LONGLONG count);
  virtual int BeginDisplayList(QFDisplayList* list);
  virtual int EndDisplayList(QFDisplayList* list);
  virtual int RenderDisplayList(QFDisplayList* list, const FRPosition& position);
  virtual void Reserved(int value);

  // Not owned.
  void SetDisplayData(QFDisplayData* data) { m_pDisplayData = data; }
  int GetLineStyle() const { return m_bLineDashed; }

 protected:
  QFDisplayData* m_pDisplayData = nullptr;
  int m_bInitialised = 0;
  int m_bLineDashed = 0;
};
