// QFFileDisplay, the back end that records: each primitive becomes an item in memory (share/display/display_items.h),
// and the destructor writes all items to two files, a binary one and, with ".txt" after its name, a readable one. A
// crash before loses the recording.
//
//   info.SetDisplay(new QFFileDisplay(FRTransf(), _T("C:\\Recordings"), _T("pocket.kvrec")));
//   Draw(info);
//   info.SetDisplay(nullptr);  // writes C:\Recordings\pocket.kvrec and C:\Recordings\pocket.kvrec.txt
//
// It records lines, polygons, triangles, texts and polylines of a CList without a mode, and the ellipses with sizes in
// pixels, which are operations of this class only. Arrows, the other ellipses and polylines, regions and display lists
// are not recorded. Positions are those that the display gets, before the transform to the screen.
#pragma once

#include "share/display/display.h"
#include "share/display/display_items.h"

// A file of a recording that was not written.
struct QFRecordingFailure {
  CString path;                 // a product path
  LONG status = ERROR_SUCCESS;  // of the platform
  bool replaced = false;        // the file is there, but may be the old one again after a power failure
};

class KVSHARE_API QFFileDisplay : public QFBaseDisplay {
 public:
  // Without a folder or a file name nothing is written.
  QFFileDisplay() = default;
  // The folder is a product path (platform/paths.h). The transform, from the world to the screen, is only kept.
  QFFileDisplay(const FRTransf& worldToScreen, const CString& folder, const CString& fileName);
  // Writes the files, as WriteFiles, and ignores a failure.
  ~QFFileDisplay() override;

  // 1; 0 if the line width is below 1 or there is no state.
  int InitialiseGraphics() override;
  // Records nothing if the line width is below 1. The other operations don't test the width.
  void DrawLine(const FRPosition& from, const FRPosition& to) override;
  void DrawTriangle(const CList<FRPosition>& points, const CList<FRUnitVector>& normals) override;
  void DrawPolygon(const CList<FRPosition>& points, const CList<FRUnitVector>& normals) override;
  using QFBaseDisplay::DrawPolyline;
  void DrawPolyline(const CList<FRPosition>& points) override;
  void DrawText(const FRPosition& position, const CString& text) override;
  int GetDisplayType() const override { return 3; }

  // Record an ellipse with half widths in pixels.
  using QFBaseDisplay::DrawEllipse;
  using QFBaseDisplay::DrawPlaneEllipse;
  virtual void DrawEllipse(const FRPosition& centre, int a, int b);
  virtual void DrawPlaneEllipse(const FRPosition& centre, int a, int b);

  const QFToolpathDisplayItems& GetItems() const { return m_Items; }
  const FRTransf& GetTransf() const { return m_Transf; }

  // Writes both files now, each as a whole or not at all; later items are not written any more, and the destructor
  // writes nothing. 1 if both are written, or if there is nothing to write: no item, folder or file name. On failure 0
  // and the first file that failed. Optional: failure.
  int WriteFiles(QFRecordingFailure* failure = nullptr);
  // Forgets all items, so that no file is written.
  void Discard() { m_Items.clear(); }

 private:
  void Record(std::shared_ptr<QFToolpathDisplayItem> item);
  void RecordFill(const std::shared_ptr<QFToolpathDisplayFillItem>& item);

  QFToolpathDisplayItems m_Items;
  CString m_Folder;
  CString m_FileName;
  FRTransf m_Transf;
  bool m_bWritten = false;
};
