// Registers the main module's callbacks that a test needs; all others are null.
//
//   kvtest::Register({.document = [] { return g_document; }});
//   kvtest::Register({});  // all null again
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
