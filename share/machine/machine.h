// KVVMMachine, a multi-channel machine tool as the simulator sees it: its channels, its shapes, and the table that says
// which shapes travel with which tool or fixture. It is loaded whole from a definition file, then only read, and can
// export itself as text beside the definition.
//
//   KVVMMachine machine;
//   CString name(_T("VMC-3"));
//   if (!machine.LoadMachine(VM_MACHINE_MILL, name)) ...   // machine.GetLoadFailure() says why
//   machine.ExportData();
//
// One thread at a time may use a machine, even for reading: walking the shapes moves the machine's one cursor.
// Nothing here shows or throws anything. Paths are in the product's form.
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

// Why the last load gave 0.
struct MachineLoadFailure {
  enum class Kind {
    kNone,
    kNoName,      // the name was empty
    kNoSettings,  // there is no application settings tree to take the folder from
    kDefinition,  // the definition file could not be read; xml says why
  };

  Kind kind = Kind::kNone;
  CString file;  // the definition file, as far as it was known
  KVXMLFailure xml;
};

// Why the last export wrote no file.
struct MachineExportFailure {
  enum class Kind {
    kNone,
    kNoChannels,  // the declared channel count is 0
    kNoShapes,    // the declared shape count is 0
    kNotWritten,  // the file could not be written; an older one stands as it was
  };

  Kind kind = Kind::kNone;
  CString file;        // the export file, as far as it was known
  std::string reason;  // for kNotWritten, for a human reader
};

class KVSHARE_API KVVMMachine : public CObject {
 public:
  static constexpr LPCTSTR kDefinitionFile = _T("KestrovaAPT.xml");
  static constexpr LPCTSTR kExportFile = _T("KestrovaAPT.txt");
  // At most so many "STATION=" lines are written in one export, and no further shape list behind so many IDs: no count
  // in a definition can fill a disk.
  static constexpr int kMostStationLines = 100000;
  static constexpr int kMostListedIds = 10000000;

  KVVMMachine() = default;
  // Deletes channels and shapes.
  ~KVVMMachine() override;

  // Empties the machine and loads the definition of that type and name from the folder that the application setting
  // "SimulationMachinePath" names. 1, or 0 with an empty model. The declared counts and the shape table of an earlier
  // load stand until the new definition replaces them, which is required.
  int LoadMachine(VM_MACHINE_TYPE type, CString& name);
  // The same without settings and without a definition file: the text of the definition comes from memory, and
  // simulationPath only makes the paths.
  int LoadFromMemory(VM_MACHINE_TYPE type, const CString& name, const CString& simulationPath,
                     std::string_view definition);
  const MachineLoadFailure& GetLoadFailure() const { return m_loadFailure; }

  // Whether path + name + "\" + name + ".mdinf" exists: 1 or 0. With checkFile 0 it is 1 at once. No backslash is added
  // to path, and the type doesn't count.
  int ValidMachine(VM_MACHINE_TYPE type, CString& path, CString& name, int checkFile);

  // Deletes channels and shapes; counts, paths and shape table stay.
  void DeleteAll();

  // The first channel of that number, null if there is none or the number exceeds the declared count. With a declared
  // count of 1 it is the head of the list whatever the number.
  CQVMChannel* GetChannel(int number) const;
  // The counts that the definition declares, which need not be the lengths of the lists.
  int GetNumChannels() const { return m_nChannels; }
  void SetNumChannels(int count) { m_nChannels = count; }
  int GetNumShapes() const { return m_nShapes; }
  void SetNumShapes(int count) { m_nShapes = count; }
  // Append; the machine owns the object from then on. The counts do not change. Null is ignored.
  void AddChannel(CQVMChannel* channel);
  void AddShape(CQVMShape* shape);
  const CObList& GetChannels() const { return m_channels; }
  const CObList& GetShapes() const { return m_shapes; }

  // Walk the shapes with the machine's one cursor; null at the end. GetShapeByID searches from the first shape with the
  // same cursor and so disturbs a running walk: it goes on behind the shape found.
  CQVMShape* GetFirstShape();
  CQVMShape* GetNextShape();
  CQVMShape* GetShapeByID(int id);

  KVVMShapeMngr* GetShapeMngr() { return &m_shapeMngr; }
  VM_MACHINE_TYPE GetMachType() const { return m_nMachType; }
  const CString& GetName() const { return m_strName; }
  // The machine's own folder, with a backslash at its end; empty before the first load.
  CString GetPersistentPath() const { return m_strPersistentPath; }

  // Sizes the shape table from the length of the channel list; see KVVMShapeMngr::CreateChannelAxisArray.
  int CreateChannelAxisArray();
  int AddShapeRef(int channel, CM_AXIS_TYPE axis, CM_TARGET_TYPE target, int id, CObList& list);

  // Writes the export file into the machine's folder. Without channels or shapes by the declared counts, or when the
  // file can't be written, nothing happens: an older file stands as it was. The new one appears whole or not at all.
  void ExportData();
  const MachineExportFailure& GetExportFailure() const { return m_exportFailure; }
  // The same text, UTF-8 with LF line ends, into out instead of a file: 1, or 0 with out untouched.
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
