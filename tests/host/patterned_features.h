// Patterns with skipped instances and orders on the features of a document, one of each kind in turn.
#pragma once

#include "host/document/host_document.h"
#include "host/document/pattern_kinds.h"
#include "share/patterns/pattern_manager.h"

namespace kvtest {

inline void RepeatFeatures(kestrova::HostDocument& document) {
  using namespace kestrova;
  int done = 0;
  document.Walk([&](HostNode& node, int) {
    if (!node.CreatePattern()) return;
    QFPatternInfo* info = nullptr;
    if (done % 3 == 0) info = new HostLinearPattern({FRXAxis, 0.02, 3}, {FRYAxis, 0.01, 2});
    if (done % 3 == 1) info = new HostCircularPattern({{0.1, 0, 0}, FRZAxis, 0.5, /*total=*/false, 6});
    if (done % 3 == 2) info = new HostPolylinePattern({{0, 0, 0}, {0.1, 0, 0}, {0.1, 0.1, 0}}, 6);
    ++done;
    node.GetPatternMgr()->SetPatternInfo(info, /*deleteOld=*/1);
    for (const int instance : {4, 1}) info->SetInstanceStatus(instance, ePatternInstanceNotActive);
    CArray<int, int&> order;
    for (int instance : {5, 3, 0}) order.Add(instance);
    for (HostNode* child = document.FirstChild(&node); child; child = document.NextSibling(*child))
      info->SetOptimizedList(child, order);
  });
}

}  // namespace kvtest
