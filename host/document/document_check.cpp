#include "host/document/document_check.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "host/document/document_status.h"
#include "host/document/pattern_report.h"
#include "share/patterns/pattern_info.h"

namespace kestrova {
namespace {

constexpr char kObjects[] = "Objects";
constexpr DWORD kLastId = 0xFFFFFFFF;
constexpr UINT kFirstCountedSchema = 2;  // of the indexer; in schema 1 a count was the number of ids

class Check {
 public:
  Check(HostDocument& document, CheckMode mode, LoadReport& report)
      : document_(document), repair_(mode == CheckMode::kRepair), report_(report) {}

  void Run() {
    FindRepeatedIds();
    for (DWORD place = 0; place < document_.NodeCount(); ++place) {
      HostNode& node = document_.NodeAt(place);
      CheckState(node);
      CheckId(node);
      CheckEntry(node);
      if (node.GetIsPatterned()) CheckPattern(node);
    }
    CheckCounts();
  }

 private:
  template <class... Values>
  void Found(unsigned location, fmt::format_string<Values...> format, Values&&... values) {
    report_.Add(location, kObjects, fmt::format(format, std::forward<Values>(values)...));
  }

  static std::string LabelOf(HostNode& node) {
    return fmt::format("{} \"{}\"", ToUtf8(node.GetClassNameW()), ToUtf8(node.Name()));
  }

  void FindRepeatedIds() {
    std::vector<DWORD> ids(document_.NodeCount());
    for (DWORD place = 0; place < ids.size(); ++place) ids[place] = document_.NodeAt(place).GetObjectId();
    std::sort(ids.begin(), ids.end());
    for (std::size_t i = 1; i < ids.size(); ++i)
      if (ids[i] == ids[i - 1] && (repeated_.empty() || repeated_.back() != ids[i])) repeated_.push_back(ids[i]);
    taken_.resize(repeated_.size());
    while (!ids.empty() && ids.back() == kLastId) ids.pop_back();  // CheckId reports it
    const DWORD last = ids.empty() ? 0 : ids.back();
    if (last < document_.NextId()) return;
    if (document_.NextId() == 0) {
      Found(kFaultInFields, "the document has no id left for new nodes");
    } else {
      Found(kFaultInFields, "the document's next id is {}, and {} is in use", document_.NextId(), last);
    }
    if (repair_) document_.SetNextId(last + 1);
  }

  void CheckState(HostNode& node) {
    if (node.GetState() >= ACTIVE && node.GetState() <= LOCKED) return;
    Found(kFaultInNodes, "{} has the invalid state {}", LabelOf(node), int(node.GetState()));
    if (repair_) node.SetState(ACTIVE);
  }

  // The first node with an id keeps it.
  void CheckId(HostNode& node) {
    const DWORD id = node.GetObjectId();
    if (id != 0 && id != kLastId && !IsTaken(id)) return;
    if (id == 0) {
      Found(kFaultInNodes, "{} has no id", LabelOf(node));
    } else if (id == kLastId) {
      Found(kFaultInNodes, "{} has the id {}, which leaves no id for new nodes", LabelOf(node), id);
    } else {
      Found(kFaultInNodes, "{} has the id {} of another node", LabelOf(node), id);
    }
    if (!repair_) return;
    const CString label = node.Name();
    node.Invalidate();
    node.ChangeName(label);
  }

  // True if an earlier node has the id. Call it once per node.
  bool IsTaken(DWORD id) {
    const auto found = std::lower_bound(repeated_.begin(), repeated_.end(), id);
    if (found == repeated_.end() || *found != id) return false;
    const auto number = std::size_t(found - repeated_.begin());
    const bool taken = taken_[number];
    taken_[number] = true;
    return taken;
  }

  void CheckEntry(HostNode& node) {
    if (document_.Indexer().FindIndex(&node) >= 0) return;
    Found(kFaultInIndexer, "{} is not in the indexer", LabelOf(node));
    if (repair_) document_.Indexer().AddObj(&node);
  }

  void CheckPattern(HostNode& node) {
    QFPatternInfo* const pattern = PatternOf(node);
    if (pattern && !pattern->GetIsPatterNotFullyDefined()) return;
    Found(kFaultInNodes, "{} has a pattern {}", LabelOf(node),
          pattern ? "whose parameters are invalid" : "without a description");
    if (repair_) node.DestroyPattern();
  }

  void CheckCounts() {
    if (document_.Indexer().GetObjectSchemaNumber() >= kFirstCountedSchema) {
      for (const LoadReport::IndexerCount& count : report_.indexer) {
        if (count.stored == count.alive) continue;
        Found(kFaultInIndexer, "the indexer counts {} of {}; the document has {}", count.stored, ToUtf8(count.name),
              count.alive);
      }
    }
    if (!repair_) return;
    document_.CorrectIndexer();
    document_.Indexer().ClearUnusedIndexers();
  }

  HostDocument& document_;
  bool repair_;
  LoadReport& report_;
  std::vector<DWORD> repeated_;  // ids that several nodes have, in ascending order
  std::vector<bool> taken_;      // which of them a node has kept
};

}  // namespace

void CheckDocument(HostDocument& document, CheckMode mode, LoadReport& report) {
  document.FreezeIds(mode == CheckMode::kReport);
  Check(document, mode, report).Run();
}

}  // namespace kestrova
