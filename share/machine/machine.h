// KVVMMachine, the model of a multi-channel machine tool for the simulator: its channels, its shapes, and the table of
// the shapes that move with each tool or fixture. A definition file fills it in one load. It can write itself as a text
// file beside the definition.
//
//   KVVMMachine machine;
//   CString name(_T("VMC-3"));
//   if (!machine.LoadMachine(VM_MACHINE_MILL, name)) ...   // machine.GetLoadFailure() says why
//   machine.ExportData();
//
// One thread at a time may use a machine, also for reading, because walking the shapes moves a cursor of the machine.
// No operation throws or shows a message. Paths are in the product's form. The machine owns its channels and shapes;
// pointers to them are valid until the next load, DeleteAll or its destruction.
#pragma once

#include <string>
#include <string_view>

#include "companions/xml/xml_document.h"
#include "framework/ob_list.h"
#include "framework/object.h"
#include "framework/text.h"
#include "share/machine/channel.h"
#include "share/machine/machine_nodes.h"
#include "share/machine/machine_types.h"
#include "share/machine/shape_table.h"

// Why the last load returned 0.
struct MachineLoadFailure {
  enum class Kind {
    kNone,
    kNoName,      // the name was empty
    kNoSettings,  // there are no application settings, which name the folder
    kDefinition,  // the definition could not be read; xml says why
  };

  Kind kind = Kind::kNone;
  CString file;  // the path of the definition file; empty if the load failed before
  KVXMLFailure xml;
};

// Why the last export wrote no file.
struct MachineExportFailure {
  enum class Kind {
    kNone,
    kNoChannels,  // the declared channel count is 0
    kNoShapes,    // the declared shape count is 0
    kNotWritten,  // the file could not be written; an older one is unchanged
  };

  Kind kind = Kind::kNone;
  CString file;        // the path of the export file; empty if the export failed before
  std::string reason;  // for kNotWritten: the system's reason, for the user
};

class KVSHARE_API KVVMMachine : public CObject {
 public:
  static constexpr LPCTSTR kDefinitionFile = _T("KestrovaAPT.xml");
  static constexpr LPCTSTR kExportFile = _T("KestrovaAPT.txt");
  // Limits of one export, so that a count in a definition cannot fill the disk: the number of "STATION=" lines, and the
  // number of IDs after which no further shape list is written.
  static constexpr int kMostStationLines = 100000;
  static constexpr int kMostListedIds = 10000000;

  KVVMMachine() = default;
  // Deletes channels and shapes.
  ~KVVMMachine() override;

  // Deletes channels and shapes, then loads the definition "<folder>\<type>\<name>\KestrovaAPT.xml"; the folder is the
  // application setting "SimulationMachinePath". Returns 1, or 0 with an empty model; GetLoadFailure says why. Declared
  // counts and shape table of an earlier load remain unless the new definition sets them; kept for existing modules.
  int LoadMachine(VM_MACHINE_TYPE type, CString& name);
  // The same for the text of a definition, without settings and files. simulationPath is used as the folder in paths.
  int LoadFromMemory(VM_MACHINE_TYPE type, const CString& name, const CString& simulationPath,
                     std::string_view definition);
  const MachineLoadFailure& GetLoadFailure() const { return m_loadFailure; }

  // 1 if the file path + name + "\" + name + ".mdinf" exists, else 0. path must end with a backslash. With checkFile 0
  // always 1. The type is ignored.
  int ValidMachine(VM_MACHINE_TYPE type, CString& path, CString& name, int checkFile);

  // Deletes channels and shapes. Counts, paths and shape table are unchanged.
  void DeleteAll();

  // The first channel with that number; null if there is no such channel or the number is above the declared count.
  // With a declared count of 1 it returns the first channel for any number.
  CQVMChannel* GetChannel(int number) const;
  // The counts declared by the definition (NUM); 0 at first. They may differ from the lengths of the lists.
  int GetNumChannels() const { return m_nChannels; }
  void SetNumChannels(int count) { m_nChannels = count; }
  int GetNumShapes() const { return m_nShapes; }
  void SetNumShapes(int count) { m_nShapes = count; }
  // Append a channel or shape, which the machine then owns. The declared counts do not change. Null is ignored.
  // One that can't be appended (std::bad_alloc) is deleted.
  void AddChannel(CQVMChannel* channel);
  void AddShape(CQVMShape* shape);
  const CObList& GetChannels() const { return m_channels; }
  const CObList& GetShapes() const { return m_shapes; }

  // Walk the shapes with the machine's cursor; null at the end. GetShapeByID searches from the first shape and moves
  // the same cursor: a later GetNextShape returns the shape after the one found. Null if no shape has that ID.
  CQVMShape* GetFirstShape();
  CQVMShape* GetNextShape();
  CQVMShape* GetShapeByID(int id);

  KVVMShapeMngr* GetShapeMngr() { return &m_shapeMngr; }
  VM_MACHINE_TYPE GetMachType() const { return m_nMachType; }
  const CString& GetName() const { return m_strName; }
  // The machine's folder with a backslash at its end; empty before the first load.
  CString GetPersistentPath() const { return m_strPersistentPath; }

  // Create the shape table with one row for each channel, and fill it; see KVVMShapeMngr.
  int CreateChannelAxisArray();
  int AddShapeRef(int channel, CM_AXIS_TYPE axis, CM_TARGET_TYPE target, int id, CObList& list);

  // Writes the export file "KestrovaAPT.txt" to the machine's folder: UTF-8 with LF line ends. It writes a temporary
  // file and renames it. If a declared count is 0 or the file cannot be written, an older file is unchanged and
  // GetExportFailure says why.
  void ExportData();
  const MachineExportFailure& GetExportFailure() const { return m_exportFailure; }
  // Appends the same text to out and returns 1; if a declared count is 0, returns 0 with out unchanged.
  int ExportText(std::string& out);

 private:
  friend class MachineExport;

  static CString GetMachType(VM_MACHINE_TYPE type);
  static std::string_view GetTurretType(MDTurretType type) { return TextOf(type); }
  static std::string_view GetDirType(CMDirType direction) { return TextOf(direction); }
  static std::string_view GetParentType(CMParentType type) { return TextOf(type); }
  static std::string_view GetAxisType(CM_AXIS_TYPE axis) { return TextOf(axis); }

  void Begin(VM_MACHINE_TYPE type, const CString& name);
  void SetSimulationPath(const CString& path);
  void ComputePersistentPath();
  int Fail(MachineLoadFailure::Kind kind);

  VM_MACHINE_TYPE m_nMachType = VM_MACHINE_MILL;
  CString m_strName;
  CString m_strSimulationPath;
  CString m_strPersistentPath;
  int m_nChannels = 0;
  CObList m_channels;  // CQVMChannel, owned, in file order
  int m_nShapes = 0;
  CObList m_shapes;  // CQVMShape, owned, in file order
  POSITION m_shapeCursor = nullptr;
  KVVMShapeMngr m_shapeMngr;
  MachineLoadFailure m_loadFailure;
  MachineExportFailure m_exportFailure;
};
