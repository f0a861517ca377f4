// KVVMMachine::ExportData and ExportText: the machine as lines of keys and values. Most lines end with a blank.
#include <algorithm>
#include <cmath>
#include <vector>

#include "platform/safe_file.h"
#include "share/machine/internal/export_writer.h"
#include "share/machine/machine.h"

namespace {

constexpr double kShown = 0.001;        // heads and shapes write only values with a larger absolute value
constexpr double kAxisVector = 0.9999;  // a component of at least this size belongs to a machine axis; not written

// One item such as "XOFF=" and its value.
struct Item {
  std::string_view head;
  double value;
};

bool IsShown(const Item& item) { return std::fabs(item.value) > kShown; }

void WriteShown(kvmachine::ExportWriter& out, std::initializer_list<Item> items) {
  for (const Item& item : items) {
    if (IsShown(item)) out << item.head << item.value << " ";
  }
}

// Writes a line with the shown items; no line if there are no such items.
void WriteShownLine(kvmachine::ExportWriter& out, std::initializer_list<Item> items) {
  if (std::none_of(items.begin(), items.end(), IsShown)) return;
  WriteShown(out, items);
  out << "\n";
}

// Fixtures write every value other than exactly 0.0, unlike heads and shapes; kept for existing readers of the file.
void WriteNonZero(kvmachine::ExportWriter& out, std::initializer_list<Item> items) {
  for (const Item& item : items) {
    if (item.value != 0.0) out << item.head << item.value << " ";
  }
}

void WriteTilted(kvmachine::ExportWriter& out, std::initializer_list<Item> items) {
  for (const Item& item : items) {
    if (item.value != 0.0 && std::fabs(item.value) < kAxisVector) out << item.head << item.value << " ";
  }
}

void WriteVector(kvmachine::ExportWriter& out, const FRVector& vector) {
  out << vector.x() << " " << vector.y() << " " << vector.z();
}

bool ByPosition(const CQVMToolNode* a, const CQVMToolNode* b) { return a->GetID() < b->GetID(); }

// The nodes sorted by position; nodes with the same position keep their order.
std::vector<const CQVMToolNode*> NodesByPosition(const CObList& list) {
  std::vector<const CQVMToolNode*> nodes;
  for (POSITION at = list.GetHeadPosition(); at;) nodes.push_back(static_cast<const CQVMToolNode*>(list.GetNext(at)));
  std::stable_sort(nodes.begin(), nodes.end(), ByPosition);
  return nodes;
}

}  // namespace

class MachineExport {
 public:
  MachineExport(KVVMMachine& machine, std::string& out) : machine_(machine), out_(out) {}

  void Write() {
    out_ << "CHANNELS=" << machine_.m_nChannels << "\n";
    for (const CQVMChannel* channel : ChannelsToWrite()) {
      WriteTool(*channel);
      WriteFixtures(*channel);
    }
    for (const CQVMShape* shape = machine_.GetFirstShape(); shape; shape = machine_.GetNextShape()) WriteShape(*shape);
    WriteShapeLists();
  }

 private:
  // The channels that GetChannel returns for the numbers 0 to the declared count: the first channel of each number.
  // Each number is not looked up, because the count may be 2,000,000,000.
  std::vector<const CQVMChannel*> ChannelsToWrite() const {
    std::vector<const CQVMChannel*> channels;
    if (machine_.m_nChannels == 1) {
      if (const CQVMChannel* only = machine_.GetChannel(1)) channels.push_back(only);
      return channels;
    }
    for (POSITION at = machine_.m_channels.GetHeadPosition(); at;) {
      const auto* channel = static_cast<const CQVMChannel*>(machine_.m_channels.GetNext(at));
      const int number = channel->GetChannelNum();
      if (number >= 0 && number <= machine_.m_nChannels) channels.push_back(channel);
    }
    std::stable_sort(channels.begin(), channels.end(), [](const CQVMChannel* a, const CQVMChannel* b) {
      return a->GetChannelNum() < b->GetChannelNum();
    });
    const auto same = [](const CQVMChannel* a, const CQVMChannel* b) {
      return a->GetChannelNum() == b->GetChannelNum();
    };
    channels.erase(std::unique(channels.begin(), channels.end(), same), channels.end());
    return channels;
  }

  int NumberOf(const CQVMChannel& channel) const { return machine_.m_nChannels == 1 ? 1 : channel.GetChannelNum(); }

  void WriteHead(const CQVMChannel& channel, std::string_view target) {
    out_ << "CHANNEL " << channel.GetName() << " ID=" << NumberOf(channel) << " TARGET=" << target << " ";
  }

  void WriteTool(const CQVMChannel& channel) {
    const MDTurretType target = channel.GetToolTarget();
    if (target == MD_TURRET_NONE) return;
    WriteHead(channel, KVVMMachine::GetTurretType(target));
    switch (target) {
      case MD_TURRET: WriteTurret(channel); break;
      case MD_TURRET_HORIZ_HEAD:
      case MD_TURRET_VERT_HEAD:
      case MD_TURRET_HEAD: WriteHeadAxes(channel); break;
      default: break;  // no line end: the next text continues this line; kept for existing readers of the file
    }
  }

  void WriteTurret(const CQVMChannel& channel) {
    out_ << "STATIONS=" << channel.GetNumStations() << " DIAM=" << channel.GetTurretDiam()
         << " GAUGEX=" << channel.GetToolGaugeX()
         << " ROT_ABOUT=" << KVVMMachine::GetDirType(channel.GetTurretDirType()) << " \n";
    if (!channel.GetIsRotateByVector()) return;
    const std::vector<const CQVMToolNode*> nodes = NodesByPosition(channel.GetToolNodes());
    auto next = nodes.begin();
    for (int station = 1; station <= channel.GetNumStations() && stationLinesLeft_ > 0; ++station) {
      --stationLinesLeft_;
      while (next != nodes.end() && (*next)->GetID() < station) ++next;
      WriteStation(channel, station, next != nodes.end() && (*next)->GetID() == station ? *next : nullptr);
    }
  }

  // A null node writes the default vectors.
  void WriteStation(const CQVMChannel& channel, int station, const CQVMToolNode* node) {
    out_ << "STATION=" << station << " LOC=";
    WriteVector(out_, node ? node->m_location : FRVector());
    out_ << " TOOL_VECX=";
    WriteVector(out_, channel.GetToolVectorX(node));
    out_ << " \n";
  }

  void WriteHeadAxes(const CQVMChannel& channel) {
    WriteDirection("ROT_5TH_ABOUT=", channel.Get5thAxisToolDirType());
    WriteShown(out_, {{"GAUGEX=", channel.GetToolGaugeX()},
                      {"GAUGEY=", channel.GetToolGaugeY()},
                      {"GAUGEZ=", channel.GetToolGaugeZ()}});
    out_ << "\n";
  }

  void WriteDirection(std::string_view head, CMDirType direction) {
    const std::string_view text = KVVMMachine::GetDirType(direction);
    if (!text.empty()) out_ << head << text << " ";
  }

  // Without fixture 0, fixture 1 is not written either.
  void WriteFixtures(const CQVMChannel& channel) {
    if (channel.GetFixtureStatus(0) == 0) return;
    for (int index = 0; index < CQVMChannel::kFixtures; ++index) {
      if (channel.GetFixtureStatus(index) == 0) continue;
      WriteHead(channel, "Fixture");
      WriteFixture(channel, index);
    }
  }

  // The file format has no bases of the 4th axis.
  void WriteFixture(const CQVMChannel& channel, int index) {
    out_ << "ID=" << index + 1 << " ";
    WriteDirection("ROT_4TH_ABOUT=", channel.Get4thAxisFixtureDirType(index));
    WriteDirection("ROT_5TH_ABOUT=", channel.Get5thAxisFixtureDirType(index));
    WriteNonZero(out_, {{"XOFF=", channel.GetFixtureXOffset(index)},
                        {"YOFF=", channel.GetFixtureYOffset(index)},
                        {"ZOFF=", channel.GetFixtureZOffset(index)}});
    WriteTilted(out_, {{"V4X=", channel.GetFixture4thXVector(index)},
                       {"V4Y=", channel.GetFixture4thYVector(index)},
                       {"V4Z=", channel.GetFixture4thZVector(index)},
                       {"V5X=", channel.GetFixture5thXVector(index)},
                       {"V5Y=", channel.GetFixture5thYVector(index)},
                       {"V5Z=", channel.GetFixture5thZVector(index)}});
    WriteNonZero(out_, {{"BASE_X_5TH_AXIS=", channel.GetFixture5thBaseXOffset(index)},
                        {"BASE_Y_5TH_AXIS=", channel.GetFixture5thBaseYOffset(index)},
                        {"BASE_Z_5TH_AXIS=", channel.GetFixture5thBaseZOffset(index)}});
    out_ << "\n";
  }

  void WriteShape(const CQVMShape& shape) {
    out_ << "SHAPE NAME=" << shape.GetName() << " ID=" << shape.GetID() << " PARENT=" << shape.GetParentName()
         << " PTYPE=" << KVVMMachine::GetParentType(shape.m_nParentType) << " ";
    if (shape.m_bTransparent) out_ << "TRANSPARENT=TRUE ";
    if (shape.m_bHousing) out_ << "HOUSING=TRUE ";
    if (shape.m_bCollisionCheck) out_ << "CCHECK=TRUE ";
    if (!shape.m_bVisible) out_ << "VISIBLE=FALSE ";
    out_ << "RGB(" << shape.m_nRed << "," << shape.m_nGreen << "," << shape.m_nBlue << ")\n";
    out_ << "PATH=" << shape.m_strPath << "\n";
    WriteShownLine(
        out_,
        {{"OFFSET X=", shape.m_offset.x()}, {"OFFSET Y=", shape.m_offset.y()}, {"OFFSET Z=", shape.m_offset.z()}});
    WriteShownLine(out_, {{"HOME X=", shape.m_homeXYZ.x()},
                          {"HOME Y=", shape.m_homeXYZ.y()},
                          {"HOME Z=", shape.m_homeXYZ.z()},
                          {"HOME A=", shape.m_homeABC.x()},
                          {"HOME B=", shape.m_homeABC.y()},
                          {"HOME C=", shape.m_homeABC.z()}});
    WriteShownLine(out_, {{"MIN X=", shape.m_minXYZ.x()},
                          {"MIN Y=", shape.m_minXYZ.y()},
                          {"MIN Z=", shape.m_minXYZ.z()},
                          {"MIN A=", shape.m_minABC.x()},
                          {"MIN B=", shape.m_minABC.y()},
                          {"MIN C=", shape.m_minABC.z()}});
    WriteShownLine(out_, {{"MAX X=", shape.m_maxXYZ.x()},
                          {"MAX Y=", shape.m_maxXYZ.y()},
                          {"MAX Z=", shape.m_maxXYZ.z()},
                          {"MAX A=", shape.m_maxABC.x()},
                          {"MAX B=", shape.m_maxABC.y()},
                          {"MAX C=", shape.m_maxABC.z()}});
  }

  // CHANNEL is the row of the shape table, from 0: a list for channel 2 of 2 is written with 1.
  void WriteShapeLists() {
    const auto channels = int(machine_.m_channels.GetCount());
    for (int channel = 0; channel < channels; ++channel) {
      for (int axis = 0; axis < kMachineAxes; ++axis) {
        const KVVMShapeRef* shapes = machine_.m_shapeMngr.FindToolShapes(channel, CM_AXIS_TYPE(axis));
        if (!IsListed(shapes)) continue;
        out_ << "TOOLSHAPELIST CHANNEL=" << RowNumber(channel);
        WriteList(CM_AXIS_TYPE(axis), *shapes);
      }
    }
    for (int channel = 0; channel < channels; ++channel) {
      for (int axis = 0; axis < kMachineAxes; ++axis) {
        for (int fixture = 0; fixture < KVVMShapeRefMngr::kFixtures; ++fixture) {
          const KVVMShapeRef* shapes =
              machine_.m_shapeMngr.FindFixtureShapes(channel, CM_AXIS_TYPE(axis), fixture, /*zeroBased=*/1);
          if (!IsListed(shapes)) continue;
          out_ << "FIXTURESHAPELIST CHANNEL=" << RowNumber(channel) << " ID=" << fixture + 1;
          WriteList(CM_AXIS_TYPE(axis), *shapes);
        }
      }
    }
  }

  // A table of one row returns its lists for every channel. The limit keeps the file small if there are many channels.
  bool IsListed(const KVVMShapeRef* shapes) {
    if (!shapes || shapes->GetCount() == 0 || listedIdsLeft_ <= 0) return false;
    listedIdsLeft_ -= shapes->GetCount();
    return true;
  }

  int RowNumber(int channel) const { return machine_.m_nChannels == 1 ? 1 : channel; }

  void WriteList(CM_AXIS_TYPE axis, const KVVMShapeRef& shapes) {
    out_ << " AXIS=" << KVVMMachine::GetAxisType(axis) << " NUM=" << shapes.GetCount() << " LIST=";
    for (int i = 0; i < shapes.GetCount(); ++i) {
      if (i) out_ << ",";
      out_ << shapes.GetIDs()[i];
    }
    out_ << "\n";
  }

  KVVMMachine& machine_;
  kvmachine::ExportWriter out_;
  int stationLinesLeft_ = KVVMMachine::kMostStationLines;
  int listedIdsLeft_ = KVVMMachine::kMostListedIds;
};

int KVVMMachine::ExportText(std::string& out) {
  using Kind = MachineExportFailure::Kind;
  m_exportFailure = {};
  m_exportFailure.kind = m_nChannels == 0 ? Kind::kNoChannels : m_nShapes == 0 ? Kind::kNoShapes : Kind::kNone;
  if (m_exportFailure.kind != Kind::kNone) return 0;
  MachineExport(*this, out).Write();
  return 1;
}

void KVVMMachine::ExportData() {
  std::string text;
  if (!ExportText(text)) return;
  ComputePersistentPath();
  m_exportFailure.file = m_strPersistentPath + kExportFile;
  SafeFile file(m_exportFailure.file);
  file.Write(text);
  if (file.Commit()) return;
  m_exportFailure.kind = MachineExportFailure::Kind::kNotWritten;
  m_exportFailure.reason = file.Reason();
}
