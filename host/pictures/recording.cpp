#include "host/pictures/recording.h"

#include <fmt/format.h>

#include "host/shell/failure.h"
#include "host/shell/whole_file.h"
#include "platform/paths.h"
#include "share/display/file_display.h"

namespace kestrova {
namespace {

// The folder and the name of the file as product paths.
std::pair<CString, CString> Split(const std::string& file) {
  const CString path(ProductPathFromSystem(file).c_str());
  const int slash = path.ReverseFind(_T('\\'));
  return {slash < 0 ? CString(_T(".")) : path.Left(slash + 1), path.Mid(slash + 1)};
}

}  // namespace

void CheckRecordingPath(const std::string& file) {
  if (Split(file).second.IsEmpty()) throw WrongUsage("--out " + file + " is a folder; name a file, such as part.kvrec");
}

std::size_t Record(Picture& picture, const std::string& file) {
  const auto [folder, name] = Split(file);
  QFDisplayInfo display(/*useOpenGL=*/0, /*window=*/nullptr, FRTransf());
  auto recording = std::make_unique<QFFileDisplay>(FRTransf(), folder, name);
  QFFileDisplay& written = *recording;
  display.SetDisplay(recording.release());
  try {
    picture.Draw(display, PictureStyle());
  } catch (...) {
    written.Discard();
    throw;
  }
  const std::size_t items = written.GetItems().size();
  QFRecordingFailure failure;
  if (!written.WriteFiles(&failure))
    ThrowNotWritten(SystemPathFromProduct(failure.path), failure.status, failure.replaced);
  return items;
}

}  // namespace kestrova
