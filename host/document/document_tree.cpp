#include "host/document/document_tree.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "companions/geometry/constants.h"
#include "host/document/feature_node.h"
#include "host/document/host_document.h"
#include "host/document/operation_node.h"
#include "host/document/pattern_report.h"
#include "host/document/tool_node.h"
#include "host/shell/output.h"
#include "host/shell/progress_bar.h"
#include "share/core/document_callbacks.h"

namespace kestrova {
namespace {

constexpr int kDeepestIndent = 20;  // deeper nodes have the same indent
constexpr std::size_t kPiece = 1 << 16;

const char* TextOf(QFObjState state) {
  switch (state) {
    case ACTIVE: return "active";
    case SUPPRESSED: return "suppressed";
    case DELETED: return "recycled";
    case LOCKED: return "locked";
  }
  return "unknown state";
}

std::string LabelOf(HostNode& node) {
  return fmt::format("{} {} \"{}\"", ToUtf8(node.GetClassNameW()), node.GetObjectId(), ToUtf8(node.Name()));
}

// Collects lines: a million nodes take few calls of fwrite.
class Output {
 public:
  explicit Output(std::FILE* out) : out_(out) {}
  ~Output() { Flush(); }
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  std::string& Text() {
    if (text_.size() > kPiece) Flush();
    return text_;
  }

 private:
  void Flush() {
    std::fwrite(text_.data(), 1, text_.size(), out_);
    text_.clear();
  }

  std::FILE* out_;
  std::string text_;
};

// Calls write(node, depth) for each node and reports progress.
template <class Write>
void WalkWithProgress(const HostDocument& document, Write write) {
  const ProgressBar bar("writing nodes", document.NodeCount());
  DWORD done = 0;
  document.Walk([&](HostNode& node, int depth) {
    write(node, depth);
    QFProgressCallback(++done);
  });
}

// Appends the text as a JSON string.
void AppendQuoted(std::string& out, const CString& text) {
  const std::string utf8 = ToUtf8(text);
  const bool plain =
      std::all_of(utf8.begin(), utf8.end(), [](char c) { return c >= ' ' && c < '\x7F' && c != '"' && c != '\\'; });
  if (plain) {
    out.append(1, '"').append(utf8).append(1, '"');
  } else {
    out += JsonText(utf8);
  }
}

// Appends facts as fields of a JSON object, lengths in the document's unit and angles in degrees.
class JsonFacts final : public NodeFacts {
 public:
  JsonFacts(std::string& out, const LengthUnit& unit) : out_(out), unit_(unit) {}

  void Length(const char* name, double metres) override { Number(name, metres / unit_.metres); }
  void Angle(const char* name, double radians) override { Number(name, radians * RADIAN_TO_DEGREE); }
  void Number(const char* name, double value) override {
    AppendName(name);
    AppendNumber(value);
  }
  void Direction(const char* name, const FRUnitVector& direction) override {
    AppendName(name);
    AppendTriple(direction.x(), direction.y(), direction.z());
  }
  void Place(const char* name, const FRPosition& metres) override {
    AppendName(name);
    AppendTriple(metres.x() / unit_.metres, metres.y() / unit_.metres, metres.z() / unit_.metres);
  }
  void Switch(const char* name, bool on) override {
    AppendName(name);
    out_ += on ? "true" : "false";
  }
  void Text(const char* name, LPCTSTR text) override {
    AppendName(name);
    AppendQuoted(out_, text);
  }

 private:
  void AppendName(const char* name) { out_.append(std::exchange(between_, ", ")) += fmt::format("\"{}\": ", name); }
  void AppendTriple(double x, double y, double z) {
    const char* before = "[";
    for (const double part : {x, y, z}) {
      out_ += std::exchange(before, ", ");
      AppendNumber(part + 0);  // turns -0 into 0
    }
    out_ += ']';
  }
  // 15 digits: without the last digit's error from the change of units. JSON has no number for infinity and NaN.
  void AppendNumber(double value) {
    if (std::isfinite(value)) {
      fmt::format_to(std::back_inserter(out_), "{:.15g}", value);
    } else {
      out_ += "null";
    }
  }

  std::string& out_;
  const LengthUnit& unit_;
  const char* between_ = "";
};

// Appends one node as a JSON object. Not with the JSON library, which takes three times as long for a million nodes.
void AppendNodeJson(std::string& out, HostNode& node, int depth, bool suppressed, const LengthUnit& unit) {
  const auto number = [&](const char* name, auto value) {
    fmt::format_to(std::back_inserter(out), ", \"{}\": {}", name, value);
  };
  const auto text = [&](const char* name, const CString& value) {
    fmt::format_to(std::back_inserter(out), ", \"{}\": ", name);
    AppendQuoted(out, value);
  };
  const auto id = [&](const char* name, QFObject* object) {
    if (object) return number(name, object->GetObjectId());
    number(name, "null");
  };
  fmt::format_to(std::back_inserter(out), "{{\"class\": \"{}\"", node.GetRuntimeClass()->m_lpszClassName);
  id("id", &node);
  id("owner", node.GetOwner());
  number("depth", depth);
  text("label", node.Name());
  text("state", CString(TextOf(node.GetState())));
  number("suppressed", suppressed);
  number("users", node.GetCountOfUserObjects());
  text("createdBy", node.GetCreatedBy());
  text("created", node.GetDateCreated());
  text("changedBy", node.GetLastModifiedBy());
  text("changed", node.GetLastModified());
  out += ", \"facts\": {";
  JsonFacts facts(out, unit);
  node.ListFacts(facts);
  out += '}';
  if (const auto* operation = DYNAMIC_DOWNCAST(HostOperation, &node)) {
    id("tool", operation->Tool());
    number("flagged", operation->IsFlagged());
  }
  if (node.GetIsPatterned()) out.append(", \"pattern\": ") += JsonText(PatternJson(node, unit));
  out += '}';
}

}  // namespace

void WriteTree(const HostDocument& document, std::FILE* out) {
  Output output(out);
  const auto endLine = [](std::string& text, std::size_t start) {
    MakeHarmless(text, start);
    text += '\n';
  };
  fmt::format_to(std::back_inserter(output.Text()), "{}: {} node{}, {}, storage version {}", ToUtf8(document.Title()),
                 document.NodeCount(), document.NodeCount() == 1 ? "" : "s", document.Units().name,
                 document.ReadStorageUnits());
  endLine(output.Text(), 0);
  WalkWithProgress(document, [&](HostNode& node, int depth) {
    std::string& text = output.Text();
    const std::size_t start = text.size();
    text.append(std::size_t(std::min(depth + 1, kDeepestIndent)) * 2, ' ');
    fmt::format_to(std::back_inserter(text), "{}, {}, {}; made by {} {}", LabelOf(node), TextOf(node.GetState()),
                   ToUtf8(node.Facts()), ToUtf8(node.GetCreatedBy()), ToUtf8(node.GetDateCreated()));
    if (!(node.GetLastModified() == node.GetDateCreated()))
      fmt::format_to(std::back_inserter(text), ", changed by {} {}", ToUtf8(node.GetLastModifiedBy()),
                     ToUtf8(node.GetLastModified()));
    endLine(text, start);
    if (!node.GetIsPatterned()) return;
    const std::size_t next = text.size();
    text.append(std::size_t(std::min(depth + 2, kDeepestIndent)) * 2, ' ') += "pattern: " + PatternText(node);
    endLine(text, next);
  });
}

void WriteTreeJson(const HostDocument& document, std::FILE* out) {
  Output output(out);
  output.Text() += "{\"title\": ";
  AppendQuoted(output.Text(), document.Title());
  output.Text() += fmt::format(", \"units\": \"{}\", \"storageVersion\": {}, \"nodes\": [", document.Units().name,
                               document.ReadStorageUnits());
  const char* between = "\n";
  std::vector<bool> suppressed;  // of the owners by depth; as IsSuppressed, which would walk up for each node
  WalkWithProgress(document, [&](HostNode& node, int depth) {
    const auto at = std::size_t(depth);
    const bool below = depth > 0 && suppressed[at - 1];
    suppressed.resize(at + 1);
    suppressed[at] = below || node.GetState() == SUPPRESSED || !node.IsEditable();
    AppendNodeJson(output.Text().append(between), node, depth, suppressed[at], document.Units());
    between = ",\n";
  });
  output.Text() += document.NodeCount() > 0 ? "\n]}\n" : "]}\n";
}

}  // namespace kestrova
