// Loading a machine definition compared with pugixml that only parses the same file, and the export compared with
// fprintf of the same fields to the same folder. The files are in a memory file system if there is one, so that the
// disk is not measured.
#include <pugixml.hpp>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "bench/ratio.h"
#include "platform/paths.h"
#include "share/core/document_callbacks.h"
#include "share/machine/machine.h"
#include "share/settings/settings_key.h"

namespace {

namespace fs = std::filesystem;

QFSettingsKey* the_settings = nullptr;

fs::path Folder() {
  const fs::path memory = "/dev/shm";
  return (fs::is_directory(memory) ? memory : fs::temp_directory_path()) / "kvbench-machine";
}

// A typical definition: each shape has limits, an offset and display attributes.
void WriteDefinition(const fs::path& file, std::size_t shapes) {
  fs::create_directories(file.parent_path());
  std::ofstream out(file);
  out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<KESTROVAAPT>\n  <MACHINE VER=\"1.0\"/>\n  <CHANNELS NUM=\"1\">\n"
         "    <CHANNEL NAME=\"Main\" ID=\"1\">\n      <TARGET TYPE=\"Vert Head\" ID=\"1\" GAUGEZ=\"120\"/>\n"
         "    </CHANNEL>\n  </CHANNELS>\n  <SHAPES NUM=\""
      << shapes << "\">\n";
  static const char* const kAxes[] = {"X", "Y", "Z", "A", "B", "C"};
  for (std::size_t i = 1; i <= shapes; ++i) {
    const char* axis = kAxes[i % 6];
    out << "    <SHAPE NAME=\"Shape " << i << "\" ID=\"" << i << "\" PATH=\"solids\\part" << i
        << ".stl\" PARENT=\"Carriage " << i % 50 << "\" PTYPE=\"" << axis << "\">\n      <OFFSET X=\"" << i % 977
        << ".25\" Y=\"-" << i % 311 << ".5\" Z=\"12.125\"/>\n      <HOME " << axis << "=\"" << i % 360
        << "\"/>\n      <MIN " << axis << "=\"-" << i % 500 << ".75\"/>\n      <MAX " << axis << "=\"" << i % 500
        << ".75\"/>\n      <DISPLAY RGB=\"140 144 148\" CCHECK=\"TRUE\" METALLIC=\"Steel\"/>\n    </SHAPE>\n";
  }
  out << "  </SHAPES>\n  <SHAPELISTS>\n    <TOOLSHAPELIST CHANNEL=\"1\" AXIS=\"Z\" NUM=\"2\" LIST=\"1,2\"/>\n"
         "  </SHAPELISTS>\n</KESTROVAAPT>\n";
}

// The straightforward export of one shape with fprintf.
void PrintShape(std::FILE* out, const CQVMShape& shape, const std::string& name, const std::string& parent,
                const std::string& path, const char* type) {
  std::fprintf(out, "SHAPE NAME=%s ID=%d PARENT=%s PTYPE=%s ", name.c_str(), shape.GetID(), parent.c_str(), type);
  if (shape.m_bTransparent) std::fprintf(out, "TRANSPARENT=TRUE ");
  if (shape.m_bHousing) std::fprintf(out, "HOUSING=TRUE ");
  if (shape.m_bCollisionCheck) std::fprintf(out, "CCHECK=TRUE ");
  if (!shape.m_bVisible) std::fprintf(out, "VISIBLE=FALSE ");
  std::fprintf(out, "RGB(%d,%d,%d)\n", shape.m_nRed, shape.m_nGreen, shape.m_nBlue);
  std::fprintf(out, "PATH=%s\n", path.c_str());
  const auto line = [out](const char* label, std::initializer_list<std::pair<char, double>> items) {
    bool any = false;
    for (const auto& [axis, value] : items) {
      if (std::fabs(value) <= 0.001) continue;
      std::fprintf(out, "%s %c=%.3f ", label, axis, value);
      any = true;
    }
    if (any) std::fprintf(out, "\n");
  };
  const auto six = [&](const char* label, const FRVector& xyz, const FRVector& abc) {
    line(label, {{'X', xyz.x()}, {'Y', xyz.y()}, {'Z', xyz.z()}, {'A', abc.x()}, {'B', abc.y()}, {'C', abc.z()}});
  };
  const FRVector& offset = shape.m_offset;
  line("OFFSET", {{'X', offset.x()}, {'Y', offset.y()}, {'Z', offset.z()}});
  six("HOME", shape.m_homeXYZ, shape.m_homeABC);
  six("MIN", shape.m_minXYZ, shape.m_minABC);
  six("MAX", shape.m_maxXYZ, shape.m_maxABC);
}

// A shape for the fprintf export. Its texts are converted to UTF-8 beforehand.
struct PlainShape {
  const CQVMShape* shape;
  std::string name, parent, path;
  const char* type;
};

void PrintAll(const fs::path& file, const std::vector<PlainShape>& shapes) {
  std::FILE* out = std::fopen(file.c_str(), "w");
  std::fprintf(out, "CHANNELS=%d\n", 1);
  std::fprintf(out, "CHANNEL %s ID=%d TARGET=%s ", "Main", 1, "Vert Head");
  std::fprintf(out, "GAUGEZ=%.3f ", 120.0);
  std::fprintf(out, "\n");
  for (const PlainShape& s : shapes) PrintShape(out, *s.shape, s.name, s.parent, s.path, s.type);
  std::fprintf(out, "TOOLSHAPELIST CHANNEL=%d AXIS=%s NUM=%d LIST=%s\n", 1, "Z", 2, "1,2");
  std::fclose(out);
}

std::string Bytes(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

QFSettingsKey* Settings() { return the_settings; }

}  // namespace

int main() {
  const fs::path folder = Folder();
  QFSettingsKey settings(_T("Bench"), _T("Software\\Zemlor\\Kestrova\\Bench"));
  settings.AddValue(_T("SimulationMachinePath"), CString(ProductPathFromSystem(folder.string()).c_str()));
  the_settings = &settings;
  QFShareRegisterDocCBK(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, Settings, nullptr, nullptr,
                        nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);

  kvbench::Table table("Machine definition: load and export");
  for (const std::size_t size : {100u, 1'000u, 10'000u, 100'000u}) {
    CString name;
    name.Format(_T("Bench%u"), size);
    const fs::path machine_folder = folder / "Mill" / ToUtf8(name);
    const std::string definition = (machine_folder / "KestrovaAPT.xml").string();
    WriteDefinition(definition, size);
    const int pairs = 7;

    KVVMMachine machine;
    if (!machine.LoadMachine(VM_MACHINE_MILL, name)) return 1;
    table.Pair(
        {"load", size, "pugixml alone", 1.5, 1},
        [&] {
          KVVMMachine loaded;
          kvbench::Keep(loaded.LoadMachine(VM_MACHINE_MILL, name));
        },
        [&] {
          pugi::xml_document document;
          kvbench::Keep(document.load_file(definition.c_str()).status);
        },
        pairs);

    static const char* const kTypes[] = {"Fixed", "X", "Y", "Z", "A", "B", "C"};
    std::vector<PlainShape> shapes;
    for (CQVMShape* shape = machine.GetFirstShape(); shape; shape = machine.GetNextShape()) {
      shapes.push_back({shape, ToUtf8(shape->GetName()), ToUtf8(shape->GetParentName()), ToUtf8(shape->m_strPath),
                        kTypes[shape->m_nParentType]});
    }
    const fs::path plain = machine_folder / "plain.txt";
    machine.ExportData();
    PrintAll(plain, shapes);
    if (Bytes(machine_folder / "KestrovaAPT.txt") != Bytes(plain)) {
      std::fprintf(stderr, "machine_bench: the two exports differ, see %s\n", machine_folder.c_str());
      return 1;
    }
    table.Pair(
        {"export", size, "fprintf", 0.5, 1}, [&] { machine.ExportData(); }, [&] { PrintAll(plain, shapes); }, pairs);
  }
  fs::remove_all(folder);
}
