#include "host/document/operation_node.h"

#include <utility>

#include "framework/archive.h"
#include "host/document/host_document.h"
#include "host/document/operation_command.h"
#include "host/document/tool_node.h"
#include "platform/thread_pointer.h"
#include "share/core/dump.h"
#include "share/objects/storage_status.h"
#include "share/utilities/units.h"

namespace kestrova {

IMPLEMENT_SERIAL(HostOperation, HostNode, VERSIONABLE_SCHEMA | 1)

namespace {

constexpr int kStockChangedText = 31000;  // id in the module's resources

CFlaggedError ClearedFlag() { return {kStockChangedText, FLAGGED_ERROR_NORMAL}; }

// One flag object for all records of a thread: the archive keeps track of every deleted object.
struct Flags {
  const CFlaggedError cleared = ClearedFlag();
  CFlaggedError stored = cleared;
};

void Delete(Flags* flags) { delete flags; }

Flags& FlagsOfThread() {
  using Pointer = ThreadPointer<Flags, Delete>;
  if (!Pointer::Get()) Pointer::Set(new Flags);
  return *Pointer::Get();
}

}  // namespace

// ---- tool

// After a failed load the tool may be deleted already: the run-time class of the object in its place shows that.
HostOperation::~HostOperation() {
  CObject* const tool = m_tool;
  if (auto* present = DYNAMIC_DOWNCAST(HostTool, tool)) present->RemoveFromUserObjectsList(this);
}

void HostOperation::SetTool(HostTool* tool) {
  if (HostTool* former = std::exchange(m_tool, tool)) former->RemoveFromUserObjectsList(this);
  if (tool) tool->AddToUserObjectsList(this, /*held=*/0);
}

int HostOperation::RemoveFromUserObjectsList(QFObject* object) {
  if (object && object == m_tool) m_tool = nullptr;
  return HostNode::RemoveFromUserObjectsList(object);
}

QFeThreadStatus HostOperation::HandleCommand(QFeCommandType type, unsigned context, void*& param) {
  auto* command = static_cast<OperationCommand*>(static_cast<QFThreadDataLink*>(param));
  return command ? command->Handle(type, context, *this) : eThreadNotHandled;
}

void HostOperation::DropLinks() {
  SetTool(nullptr);
  HostNode::DropLinks();
}

LinkFaults HostOperation::RepairLinks(const HostDocument& document) {
  LinkFaults faults = HostNode::RepairLinks(document);
  if (m_tool && !document.Owns(m_tool)) {
    m_tool = nullptr;
    ++faults.dangling;
  } else if (m_tool && !m_tool->GetIsUsingThisObject(this)) {
    m_tool->AddToUserObjectsList(this, /*held=*/0);
    ++faults.oneSided;
  }
  return faults;
}

const HostNode* HostOperation::UsedNode() const { return m_tool; }

// ---- parameters

void HostOperation::SetCutting(double feed, double speed, double step) {
  m_feed = feed;
  m_speed = speed;
  m_step = step;
}

CFlaggedError* HostOperation::GetFlag() {
  if (!m_flag) m_flag = std::make_unique<CFlaggedError>(ClearedFlag());
  return m_flag.get();
}

void HostOperation::Serialize(CArchive& ar) {
  BeginLevel(ar, RUNTIME_CLASS(HostOperation));
  HostNode::Serialize(ar);
  auto& [cleared, flag] = FlagsOfThread();
  if (ar.IsStoring()) {
    StoreReferenceOrNull(ar, m_tool);
    ar << m_feed << m_speed << m_step;
    flag = m_flag ? *m_flag : cleared;
    flag.Serialize(ar);
  } else {
    ar >> m_tool >> m_feed >> m_speed >> m_step;
    flag = m_flag ? *m_flag : cleared;
    flag.Serialize(ar);
    const bool is_set = flag.GetFlag() || flag.GetFlagErrorType() != FLAGGED_ERROR_NORMAL;
    m_flag = is_set ? std::make_unique<CFlaggedError>(flag) : nullptr;
  }
}

int HostOperation::CopyParameters(QFObject* source) {
  if (const auto* operation = DYNAMIC_DOWNCAST(HostOperation, source); operation && operation != this) {
    SetTool(operation->m_tool);
    SetCutting(operation->m_feed, operation->m_speed, operation->m_step);
    m_flag = operation->m_flag ? std::make_unique<CFlaggedError>(*operation->m_flag) : nullptr;
  }
  return HostNode::CopyParameters(source);
}

QFObject* HostOperation::Clone() { return CloneInto(std::make_unique<HostOperation>()); }

bool HostOperation::IsLike(const HostNode& other) const {
  const auto& operation = static_cast<const HostOperation&>(other);
  return m_tool == operation.m_tool && SameLength(m_feed, operation.m_feed) && m_speed == operation.m_speed &&
         SameLength(m_step, operation.m_step);
}

CString HostOperation::Facts() const {
  CString text;
  if (m_tool) text.Format(_T("tool %d, "), m_tool->GetObjectId());
  text.AppendFormat(_T("feed %s/min, speed %g/min, step %s"), ConvertLengthToUserUnits(m_feed), m_speed,
                    ConvertLengthToUserUnits(m_step));
  if (IsFlagged()) text += _T(", toolpath outdated");
  return text;
}

void HostOperation::ListFacts(NodeFacts& facts) const {
  facts.Length("feed", m_feed);
  facts.Number("speed", m_speed);
  facts.Length("step", m_step);
}

void HostOperation::DumpData(FILE* file) {
  if (!file) return;
  HostNode::DumpData(file);
  DumpBanner(file, _T("HostOperation"), _T("Start"));
  DumpPrint(file, _T("\n m_tool: %s"), m_tool ? m_tool->Name() : CString());
  DumpPrint(file, _T("\n m_feed: %g"), m_feed);
  DumpPrint(file, _T("\n m_speed: %g"), m_speed);
  DumpPrint(file, _T("\n m_step: %g"), m_step);
  if (m_flag) m_flag->DumpData(file);
  DumpBanner(file, _T("HostOperation"), _T("End"));
}

}  // namespace kestrova
