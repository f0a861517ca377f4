#include "share/display/file_display.h"

#include <new>

#include "platform/safe_file.h"
#include "share/utilities/files_and_folders.h"

namespace {

constexpr std::size_t kFlushBytes = 1 << 20;

template <class T>
std::vector<T> ToVector(const CList<T>& list) {
  std::vector<T> values;
  values.reserve(std::size_t(list.GetCount()));
  for (POSITION at = list.GetHeadPosition(); at;) values.push_back(list.GetNext(at));
  return values;
}

// Writes what has grown to its file.
void Flush(std::string& bytes, SafeFile& file, std::size_t least) {
  if (bytes.size() < least) return;
  file.Write(bytes);
  bytes.clear();
}

void WriteAll(const QFToolpathDisplayItems& items, SafeFile& binaryFile, SafeFile& textFile) {
  std::string binary, text;
  for (ULONGLONG count = items.size(), i = 0; i < sizeof count; ++i) binary += char(count >> (8 * i) & 0xFF);
  for (const auto& item : items) {
    item->Write(binary, text);
    Flush(binary, binaryFile, kFlushBytes);
    Flush(text, textFile, kFlushBytes);
  }
  Flush(binary, binaryFile, 0);
  Flush(text, textFile, 0);
}

}  // namespace

QFFileDisplay::QFFileDisplay(const FRTransf& worldToScreen, const CString& folder, const CString& fileName)
    : m_Folder(folder), m_FileName(fileName), m_Transf(worldToScreen) {}

QFFileDisplay::~QFFileDisplay() {
  QFBaseDisplay::UninitialiseGraphics();
  try {
    WriteFiles();
  } catch (const std::bad_alloc&) {  // as any failure to write: the former files stay
  }
}

int QFFileDisplay::WriteFiles(QFRecordingFailure* failure) {
  if (m_bWritten || m_Items.empty() || m_Folder.IsEmpty() || m_FileName.IsEmpty()) return 1;
  m_bWritten = true;
  CString path;
  QFFileAndFolderUtilities().ConcatFolderPathFileName(m_Folder, m_FileName, path);
  const CString textPath = path + _T(".txt");
  SafeFile binaryFile(path), textFile(textPath);
  WriteAll(m_Items, binaryFile, textFile);
  const auto commit = [failure](SafeFile& file, const CString& name) {
    if (file.Commit()) return true;
    if (failure) *failure = {name, file.FirstError(), file.IsReplaced()};
    return false;
  };
  return commit(binaryFile, path) && commit(textFile, textPath);
}

void QFFileDisplay::Record(std::shared_ptr<QFToolpathDisplayItem> item) {
  if (!m_pDisplayData) return;
  item->m_Color = m_pDisplayData->GetColor();
  item->m_bDashed = m_bLineDashed;
  item->m_nLineWidth = m_pDisplayData->GetLineWidth();
  m_Items.push_back(std::move(item));
}

void QFFileDisplay::RecordFill(const std::shared_ptr<QFToolpathDisplayFillItem>& item) {
  if (!m_pDisplayData) return;
  item->m_bFill = m_pDisplayData->GetIsFill();
  item->m_bTransparent = m_pDisplayData->GetIsTransparent();
  item->m_ColorFill = m_pDisplayData->GetFillColor();
  Record(item);
}

int QFFileDisplay::InitialiseGraphics() {
  if (!m_pDisplayData || m_pDisplayData->GetLineWidth() < 1) return 0;
  return m_bInitialised = 1;
}

void QFFileDisplay::DrawLine(const FRPosition& from, const FRPosition& to) {
  if (!m_pDisplayData || m_pDisplayData->GetLineWidth() < 1) return;
  auto item = std::make_shared<QFToolpathDisplayLine>();
  item->m_StartPos = from;
  item->m_EndPos = to;
  Record(std::move(item));
}

void QFFileDisplay::DrawTriangle(const CList<FRPosition>& points, const CList<FRUnitVector>& normals) {
  auto item = std::make_shared<QFToolpathDisplayTriangle>();
  item->m_PtList = ToVector(points);
  item->m_PtNormalList = ToVector(normals);
  RecordFill(item);
}

void QFFileDisplay::DrawPolygon(const CList<FRPosition>& points, const CList<FRUnitVector>& normals) {
  auto item = std::make_shared<QFToolpathDisplayPolygon>();
  item->m_PtList = ToVector(points);
  item->m_PtNormalList = ToVector(normals);
  RecordFill(item);
}

void QFFileDisplay::DrawPolyline(const CList<FRPosition>& points) {
  auto item = std::make_shared<QFToolpathDisplayPolyline>();
  item->m_PtList = ToVector(points);
  Record(std::move(item));
}

void QFFileDisplay::DrawText(const FRPosition& position, const CString& text) {
  auto item = std::make_shared<QFToolpathDisplayText>();
  item->m_StartPos = position;
  item->m_nCharCount = DWORD(text.GetLength());
  item->m_Text = text;
  item->m_pFont = m_pDisplayData ? m_pDisplayData->GetFont() : nullptr;
  Record(std::move(item));
}

void QFFileDisplay::DrawEllipse(const FRPosition& centre, int a, int b) {
  auto item = std::make_shared<QFToolpathDisplayEllipse>();
  item->m_stPos = centre;
  item->m_nPixelHorizontal = a;
  item->m_nPixelVertical = b;
  RecordFill(item);
}

void QFFileDisplay::DrawPlaneEllipse(const FRPosition& centre, int a, int b) {
  QFFileDisplay::DrawEllipse(centre, a, b);
}
