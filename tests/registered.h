// The main module's callbacks, of which a test needs one or two: those not named are null.
//
//   kvtest::Register({.document = [] { return g_document; }});
//   kvtest::Register({});  // none again
#pragma once

#include "share/core/document_callbacks.h"

namespace kvtest {

struct Callbacks {
  unsigned long (*nextId)() = nullptr;
  QFObject* (*document)() = nullptr;
  QFSettingsKey* (*docSettings)() = nullptr;
  QFSettingsKey* (*appSettings)() = nullptr;
  ProductInfo* (*productInfo)() = nullptr;
};

inline void Register(const Callbacks& callbacks) {
  QFShareRegisterDocCBK(nullptr, callbacks.nextId, callbacks.document, nullptr, nullptr, nullptr, callbacks.docSettings,
                        callbacks.appSettings, nullptr, callbacks.productInfo, nullptr, nullptr, nullptr, nullptr,
                        nullptr, nullptr, nullptr, nullptr);
}

}  // namespace kvtest
