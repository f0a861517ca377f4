// A fixture with an active document and a temporary folder.
#pragma once

#include <gtest/gtest.h>

#include "host/document/active_document.h"
#include "host/document/document_loader.h"
#include "host/document/drilling_node.h"
#include "host/document/feature_node.h"
#include "host/document/setup_node.h"
#include "host/document/tool_node.h"
#include "host/module/main_module.h"
#include "tests/scratch.h"

namespace kvtest {

class DocumentTest : public testing::Test {
 protected:
  DocumentTest() { kestrova::StartMainModule(); }

  template <class Node>
  Node& Add(kestrova::HostNode* owner, LPCTSTR label) {
    auto node = std::make_unique<Node>();
    node->ChangeName(label);
    return static_cast<Node&>(document_.Adopt(std::move(node), owner));
  }
  std::string File(const char* name) const { return (folder_.Path() / name).string(); }

  const ScratchFolder folder_;
  kestrova::HostDocument document_;
  const kestrova::ActiveDocument active_{&document_};
};

}  // namespace kvtest
