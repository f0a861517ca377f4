#include "share/machine/machine.h"

#include <memory>

#include "platform/files.h"
#include "share/core/document_callbacks.h"
#include "share/machine/machine_reader.h"
#include "share/settings/settings_key.h"

namespace {

constexpr TCHAR kBackslash = _T('\\');

void DeleteObjects(CObList& list) {
  for (POSITION at = list.GetHeadPosition(); at;) delete list.GetNext(at);
  list.RemoveAll();
}

CString WideText(std::string_view ascii) { return FromUtf8(ascii); }

}  // namespace

KVVMMachine::~KVVMMachine() { DeleteAll(); }

void KVVMMachine::DeleteAll() {
  DeleteObjects(m_channels);
  DeleteObjects(m_shapes);
  m_shapeCursor = nullptr;
}

// ---- loading

void KVVMMachine::Begin(VM_MACHINE_TYPE type, const CString& name) {
  DeleteAll();
  m_nMachType = type;
  m_strName = name;
  m_loadFailure = {};
}

int KVVMMachine::LoadMachine(VM_MACHINE_TYPE type, CString& name) {
  Begin(type, name);
  if (name.IsEmpty()) return Fail(MachineLoadFailure::Kind::kNoName);
  const QFSettingsKey* settings = GetAppSettingsCB();
  if (!settings) return Fail(MachineLoadFailure::Kind::kNoSettings);
  CString path;
  settings->GetValue(_T("SimulationMachinePath"), path);
  SetSimulationPath(path);
  KVVMMachineXMLReaderUtil reader;
  if (reader.LoadFromFile(m_loadFailure.file, this)) return 1;
  m_loadFailure.xml = reader.GetFailure();
  return Fail(MachineLoadFailure::Kind::kDefinition);
}

int KVVMMachine::LoadFromMemory(VM_MACHINE_TYPE type, const CString& name, const CString& simulationPath,
                                std::string_view definition) {
  Begin(type, name);
  if (name.IsEmpty()) return Fail(MachineLoadFailure::Kind::kNoName);
  SetSimulationPath(simulationPath);
  KVVMMachineXMLReaderUtil reader;
  if (reader.LoadFromMemory(definition, this)) return 1;
  m_loadFailure.xml = reader.GetFailure();
  return Fail(MachineLoadFailure::Kind::kDefinition);
}

void KVVMMachine::SetSimulationPath(const CString& path) {
  m_strSimulationPath = path;
  if (path.GetAt(path.GetLength() - 1) != kBackslash) m_strSimulationPath += kBackslash;
  ComputePersistentPath();
  m_loadFailure.file = m_strPersistentPath + kDefinitionFile;
}

void KVVMMachine::ComputePersistentPath() {
  m_strPersistentPath = m_strSimulationPath + GetMachType(m_nMachType) + kBackslash + m_strName + kBackslash;
}

int KVVMMachine::Fail(MachineLoadFailure::Kind kind) {
  m_loadFailure.kind = kind;
  return 0;
}

int KVVMMachine::ValidMachine(VM_MACHINE_TYPE, CString& path, CString& name, int checkFile) {
  if (checkFile == 0) return 1;
  const CString file = path + name + kBackslash + name + _T(".mdinf");
  const int access = _waccess(file, 0);
  return access == -1 || access == 2 ? 0 : 1;
}

CString KVVMMachine::GetMachType(VM_MACHINE_TYPE type) { return WideText(TextOf(type)); }

// ---- channels and shapes

void KVVMMachine::AddChannel(CQVMChannel* channel) {
  std::unique_ptr<CQVMChannel> owned(channel);
  if (channel) m_channels.AddTail(channel);
  static_cast<void>(owned.release());
}

void KVVMMachine::AddShape(CQVMShape* shape) {
  std::unique_ptr<CQVMShape> owned(shape);
  if (shape) m_shapes.AddTail(shape);
  static_cast<void>(owned.release());
}

CQVMChannel* KVVMMachine::GetChannel(int number) const {
  if (m_nChannels == 1) return m_channels.IsEmpty() ? nullptr : static_cast<CQVMChannel*>(m_channels.GetHead());
  if (number > m_nChannels) return nullptr;
  for (POSITION at = m_channels.GetHeadPosition(); at;) {
    auto* channel = static_cast<CQVMChannel*>(m_channels.GetNext(at));
    if (channel->GetChannelNum() == number) return channel;
  }
  return nullptr;
}

CQVMShape* KVVMMachine::GetFirstShape() {
  m_shapeCursor = m_shapes.GetHeadPosition();
  return GetNextShape();
}

CQVMShape* KVVMMachine::GetNextShape() {
  return m_shapeCursor ? static_cast<CQVMShape*>(m_shapes.GetNext(m_shapeCursor)) : nullptr;
}

CQVMShape* KVVMMachine::GetShapeByID(int id) {
  CQVMShape* shape = GetFirstShape();
  while (shape && shape->GetID() != id) shape = GetNextShape();
  return shape;
}

int KVVMMachine::CreateChannelAxisArray() { return m_shapeMngr.CreateChannelAxisArray(int(m_channels.GetCount())); }

int KVVMMachine::AddShapeRef(int channel, CM_AXIS_TYPE axis, CM_TARGET_TYPE target, int id, CObList& list) {
  return m_shapeMngr.AddShapeRef(channel, axis, target, id, list);
}
