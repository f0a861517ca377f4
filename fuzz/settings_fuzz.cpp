// Loads any bytes as a document's settings. The first byte chooses the storage version of the document. A failed load
// must throw. Loaded settings must store, and load and store again as the same bytes.
#include <cstdlib>
#include <string>

#include "framework/file.h"
#include "host/document/settings_stream.h"
#include "share/core/document_callbacks.h"
#include "share/objects/object.h"

namespace {

float g_units = 38.0f;

class Document : public QFObject {
 public:
  int SendQFCoreMessage(QF_CORE_MESSAGE_ID message, ULONGLONG argument, LONGLONG) override {
    if (message == QF_CORE_GET_READ_STORAGE_UNITS) *reinterpret_cast<float*>(std::uintptr_t(argument)) = g_units;
    return 1;
  }
};

QFObject* TheDocument() {
  static Document document;
  return &document;
}

std::string Stored(QFDocSettings& settings) {
  CMemFile file;
  kestrova::WriteSettings(settings, file);
  return {reinterpret_cast<const char*>(file.GetData()), std::size_t(file.GetLength())};
}

void Use(QFDocSettings& settings) {
  settings.GetKey(_T("Colors"));
  for (int value = 0; value < 3; ++value) settings.SetValue(_T("SeqHoleFeat"), value);
  g_units = 38.0f;
  std::string bytes = Stored(settings);
  CMemFile file(reinterpret_cast<BYTE*>(bytes.data()), UINT(bytes.size()));
  if (Stored(*kestrova::ReadSettings(file, /*endIsKnown=*/true)) != bytes) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  QFShareRegisterDocCBK(nullptr, nullptr, TheDocument, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                        nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  g_units = data[0] % 2 == 0 ? 38.0f : 6.0f;
  CMemFile file(const_cast<BYTE*>(data) + 1, UINT(size - 1));
  std::unique_ptr<QFDocSettings> settings;
  try {
    settings = kestrova::ReadSettings(file, /*endIsKnown=*/false);
  } catch (const std::exception&) {
    return 0;
  }
  Use(*settings);
  return 0;
}
