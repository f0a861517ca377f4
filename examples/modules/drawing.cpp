// Drawing through the display, here into a recording: the same calls draw by OpenGL or in a window.
#include <kvshare/kvshare.h>

#include <cstdio>

// begin draw
// Draws a square of that size about the origin, and its name.
void DrawSquare(QFDisplayInfo& info, double size) {
  const double half = size / 2;
  const FRPosition corners[] = {{-half, -half, 0}, {half, -half, 0}, {half, half, 0}, {-half, half, 0}};
  info.SetColor(0x0000FF);  // 0x00BBGGRR: red
  info.SetLineWidth(2);
  for (int corner = 0; corner < 4; ++corner) info.DrawLine(corners[corner], corners[(corner + 1) % 4]);
  info.DrawText(corners[0], _T("pocket"));
}
// end draw

// begin main
int main() {
  InitShareDll();
  QFDisplayInfo info(/*useOpenGL=*/0, /*window=*/nullptr, FRTransf());
  auto* recording = new QFFileDisplay(FRTransf(), _T("."), _T("square.kvrec"));
  info.SetDisplay(recording);  // takes ownership
  DrawSquare(info, 20);
  info.SetUseInstTransf(1, GetTranslateTransf({100, 0, 0}));  // an instance beside the first
  DrawSquare(info, 20);

  for (const auto& item : recording->GetItems()) {
    if (const auto* line = dynamic_cast<const QFToolpathDisplayLine*>(item.get()))
      std::printf("line from %g %g to %g %g\n", line->m_StartPos.x(), line->m_StartPos.y(), line->m_EndPos.x(),
                  line->m_EndPos.y());
    if (const auto* text = dynamic_cast<const QFToolpathDisplayText*>(item.get()))
      std::printf("text %s\n", ToUtf8(text->m_Text).c_str());
  }
  QFRecordingFailure failure;
  if (!recording->WriteFiles(&failure)) {
    std::printf("%s was not written\n", ToUtf8(failure.path).c_str());
    return 1;
  }
}
// end main
