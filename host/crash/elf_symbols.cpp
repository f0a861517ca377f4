// Symbols by elfutils: libdwfl unwinds the stacks and reads ELF and DWARF.
#include <cxxabi.h>
#include <dwarf.h>
#include <elf.h>
#include <elfutils/libdw.h>
#include <elfutils/libdwfl.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "host/crash/symbols.h"

namespace kestrova {
namespace {

namespace fs = std::filesystem;

constexpr int kDwarfRegisters = 17;  // 16 and the return address
constexpr pid_t kThread = 1;         // any id: one thread is unwound at a time

struct Ended {
  void operator()(Dwfl* session) const { dwfl_end(session); }
  void operator()(Elf* file) const { elf_end(file); }
  void operator()(void* block) const { std::free(block); }
};
using DwflSession = std::unique_ptr<Dwfl, Ended>;

// The build id of an ELF file; empty if it has none or cannot be read. Only regular files are opened: a dump may name a
// pipe or a device.
std::string BuildIdOf(const std::string& path) {
  std::error_code error;
  if (!fs::is_regular_file(path, error)) return {};
  static const Dwfl_Callbacks callbacks = {dwfl_build_id_find_elf, dwfl_standard_find_debuginfo, nullptr, nullptr};
  const DwflSession session(dwfl_begin(&callbacks));
  if (!session) return {};
  dwfl_report_begin(session.get());
  Dwfl_Module* const module = dwfl_report_elf(session.get(), path.c_str(), path.c_str(), -1, 0, false);
  dwfl_report_end(session.get(), nullptr, nullptr);
  const unsigned char* bits = nullptr;
  GElf_Addr address = 0;
  const int size = module ? dwfl_module_build_id(module, &bits, &address) : 0;
  return size > 0 ? std::string(bits, bits + size) : std::string();
}

// "FOLDER/.build-id/xx/yyyy"
std::string FileByBuildId(const std::string& folder, const std::string& id) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string name = folder + "/.build-id/";
  for (std::size_t i = 0; i < id.size(); ++i) {
    const auto byte = static_cast<unsigned char>(id[i]);
    if (i == 1) name += '/';
    name += {kDigits[byte >> 4], kDigits[byte & 15]};
  }
  return name;
}

std::string Demangled(const char* name) {
  if (!name) return {};
  int status = 0;
  const std::unique_ptr<char, Ended> text(abi::__cxa_demangle(name, nullptr, nullptr, &status));
  return text ? text.get() : name;
}

// The name of a function's entry: the mangled one, which has the parameters, or the plain one.
std::string NameOf(Dwarf_Die* die) {
  Dwarf_Attribute attribute;
  Dwarf_Attribute* found = dwarf_attr_integrate(die, DW_AT_linkage_name, &attribute);
  if (!found) found = dwarf_attr_integrate(die, DW_AT_MIPS_linkage_name, &attribute);
  if (const char* const name = found ? dwarf_formstring(found) : nullptr) return Demangled(name);
  const char* const name = dwarf_diename(die);
  return name ? name : "";
}

// Where an inlined function is called.
void SetCallPlace(Dwarf_Die* unit, Dwarf_Die* inlined, SourceFrame& caller) {
  Dwarf_Files* files = nullptr;
  std::size_t count = 0;
  Dwarf_Word file = 0, line = 0;
  Dwarf_Attribute attribute;
  caller.source.clear(), caller.line = 0;
  if (dwarf_formudata(dwarf_attr(inlined, DW_AT_call_file, &attribute), &file) != 0) return;
  if (dwarf_formudata(dwarf_attr(inlined, DW_AT_call_line, &attribute), &line) != 0) return;
  if (dwarf_getsrcfiles(unit, &files, &count) != 0 || file >= count) return;
  const char* const source = dwarf_filesrc(files, file, nullptr, nullptr);
  if (!source) return;
  caller.source = source;
  caller.line = int(line);
}

// The header that says for which processor the unwinder works.
Elf64_Ehdr ProcessorHeader() {
  Elf64_Ehdr header = {};
  std::memcpy(header.e_ident, ELFMAG, SELFMAG);
  header.e_ident[EI_CLASS] = ELFCLASS64;
  header.e_ident[EI_DATA] = ELFDATA2LSB;
  header.e_ident[EI_VERSION] = EV_CURRENT;
  header.e_type = ET_CORE;
  header.e_machine = EM_X86_64;
  header.e_version = EV_CURRENT;
  header.e_ehsize = sizeof header;
  return header;
}

}  // namespace

struct Symbols::Session {
  struct Located {
    const DumpModule* module;
    Session* session;
    ModuleFile file = ModuleFile::kNotAsked;
  };
  struct Walk {
    std::vector<StackAddress> addresses;
    std::size_t most;
  };

  Session(const Minidump& d, const DumpBytes& b, const std::vector<std::string>& f);

  std::vector<std::string> Candidates(const DumpModule& module) const;
  int Open(Located& located, Dwfl_Module* module, void** userdata, Dwarf_Addr base, char** name, Elf** file) const;
  static int FindElf(Dwfl_Module* module, void** userdata, const char* name, Dwarf_Addr base, char** file, Elf** elf);
  static int FindDebugInfo(Dwfl_Module* module, void** userdata, const char* name, Dwarf_Addr base, const char* file,
                           const char* link, GElf_Word crc, char** found);

  static pid_t NextThread(Dwfl*, void* session, void** thread);
  static bool GetThread(Dwfl*, pid_t, void* session, void** thread);
  static bool ReadMemory(Dwfl*, Dwarf_Addr address, Dwarf_Word* word, void* session);
  static bool SetRegisters(Dwfl_Thread* thread, void* session);
  static int AddFrame(Dwfl_Frame* frame, void* walk);
  static const Dwfl_Thread_Callbacks kThreadCallbacks;

  void AddScopes(Dwfl_Module* module, std::uint64_t place, std::vector<SourceFrame>& frames) const;

  const Minidump& dump;
  const DumpBytes& bytes;
  const std::vector<std::string> folders;
  std::string debug_path;  // in libdwfl's form
  char* debug_path_text = nullptr;
  Elf64_Ehdr header = ProcessorHeader();
  std::unique_ptr<Elf, Ended> processor;
  Dwfl_Callbacks callbacks = {};
  std::vector<Located> located;  // as the dump's modules
  const DumpRegisters* registers = nullptr;
  DwflSession dwfl;  // ends before the rest
};

const Dwfl_Thread_Callbacks Symbols::Session::kThreadCallbacks = {NextThread,   GetThread, ReadMemory,
                                                                  SetRegisters, nullptr,   nullptr};

Symbols::Session::Session(const Minidump& d, const DumpBytes& b, const std::vector<std::string>& f)
    : dump(d), bytes(b), folders(f), debug_path(":.debug:/usr/lib/debug") {
  for (const std::string& folder : folders) {
    std::error_code error;
    debug_path += ':' + fs::absolute(folder, error).string();
  }
  debug_path_text = debug_path.data();
  elf_version(EV_CURRENT);
  processor.reset(elf_memory(reinterpret_cast<char*>(&header), sizeof header));
  callbacks = {FindElf, FindDebugInfo, nullptr, &debug_path_text};
  dwfl.reset(dwfl_begin(&callbacks));
  if (!dwfl || !processor) return;
  located.reserve(dump.modules.size());
  dwfl_report_begin(dwfl.get());
  for (const DumpModule& module : dump.modules) {
    located.push_back({&module, this});
    Dwfl_Module* const reported =
        dwfl_report_module(dwfl.get(), module.path.c_str(), module.base, module.base + module.size);
    void** userdata = nullptr;
    if (!reported) continue;
    dwfl_module_info(reported, &userdata, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    *userdata = &located.back();
    if (!module.build_id.empty())
      dwfl_module_report_build_id(reported, reinterpret_cast<const unsigned char*>(module.build_id.data()),
                                  module.build_id.size(), 0);
  }
  dwfl_report_end(dwfl.get(), nullptr, nullptr);
  if (!dwfl_attach_state(dwfl.get(), processor.get(), kThread, &kThreadCallbacks, this)) dwfl.reset();
}

// ---- files of modules

std::vector<std::string> Symbols::Session::Candidates(const DumpModule& module) const {
  std::vector<std::string> candidates;
  for (const std::string& folder : folders) {
    if (module.build_id.size() > 1) candidates.push_back(FileByBuildId(folder, module.build_id));
    if (module.path.empty()) continue;
    candidates.push_back(folder + '/' + module.path);
    candidates.push_back((fs::path(folder) / fs::path(module.path).filename()).string());
  }
  if (module.path.starts_with('/')) candidates.push_back(module.path);
  return candidates;
}

int Symbols::Session::Open(Located& found, Dwfl_Module* module, void** userdata, Dwarf_Addr base, char** name,
                           Elf** file) const {
  const DumpModule& wanted = *found.module;
  found.file = ModuleFile::kMissing;
  for (const std::string& candidate : Candidates(wanted)) {
    std::error_code error;
    if (!fs::is_regular_file(candidate, error)) continue;
    if (!wanted.build_id.empty() && BuildIdOf(candidate) != wanted.build_id) {
      found.file = ModuleFile::kOther;
      continue;
    }
    // It opens a file whose path begins with a slash, and otherwise memory of a process, which a dump has not.
    const std::string path = fs::absolute(candidate, error).string();
    const int descriptor = dwfl_linux_proc_find_elf(module, userdata, path.c_str(), base, name, file);
    if (descriptor < 0) continue;
    found.file = wanted.build_id.empty() ? ModuleFile::kUnproven : ModuleFile::kFound;
    return descriptor;
  }
  if (wanted.build_id.empty()) return -1;
  const int descriptor = dwfl_build_id_find_elf(module, userdata, wanted.path.c_str(), base, name, file);
  if (descriptor >= 0) found.file = ModuleFile::kFound;
  return descriptor;
}

int Symbols::Session::FindElf(Dwfl_Module* module, void** userdata, const char*, Dwarf_Addr base, char** file,
                              Elf** elf) {
  if (!*userdata) return -1;
  Located& found = *static_cast<Located*>(*userdata);
  return found.session->Open(found, module, userdata, base, file, elf);
}

int Symbols::Session::FindDebugInfo(Dwfl_Module* module, void** userdata, const char* name, Dwarf_Addr base,
                                    const char* file, const char* link, GElf_Word crc, char** found) {
  return dwfl_standard_find_debuginfo(module, userdata, name, base, file, link, crc, found);
}

// ---- unwinding

pid_t Symbols::Session::NextThread(Dwfl*, void* session, void** thread) {
  if (*thread) return 0;
  *thread = session;
  return kThread;
}

bool Symbols::Session::GetThread(Dwfl*, pid_t, void* session, void** thread) {
  *thread = session;
  return true;
}

bool Symbols::Session::ReadMemory(Dwfl*, Dwarf_Addr address, Dwarf_Word* word, void* session) {
  const Session& self = *static_cast<Session*>(session);
  const std::optional<std::uint64_t> found = self.dump.WordAt(self.bytes, address);
  *word = found.value_or(0);
  return found.has_value();
}

bool Symbols::Session::SetRegisters(Dwfl_Thread* thread, void* session) {
  const DumpRegisters& registers = *static_cast<Session*>(session)->registers;
  Dwarf_Word words[kDwarfRegisters];
  std::copy(registers.general.begin(), registers.general.end(), words);
  words[kDwarfRegisters - 1] = registers.rip;
  return dwfl_thread_state_registers(thread, 0, kDwarfRegisters, words);
}

int Symbols::Session::AddFrame(Dwfl_Frame* frame, void* walk) {
  Walk& self = *static_cast<Walk*>(walk);
  Dwarf_Addr address = 0;
  bool interrupted = false;
  if (!dwfl_frame_pc(frame, &address, &interrupted)) return DWARF_CB_ABORT;
  self.addresses.push_back({address, !interrupted});
  return self.addresses.size() < self.most ? DWARF_CB_OK : DWARF_CB_ABORT;
}

// ---- names and lines

// Adds the inlined functions at the place, and completes the frame of the function that has them, the last one.
void Symbols::Session::AddScopes(Dwfl_Module* module, std::uint64_t place, std::vector<SourceFrame>& frames) const {
  Dwarf_Addr bias = 0;
  Dwarf_Die* const unit = dwfl_module_addrdie(module, place, &bias);
  Dwarf_Die* scopes = nullptr;
  const int count = unit ? dwarf_getscopes(unit, place - bias, &scopes) : 0;
  const std::unique_ptr<Dwarf_Die, Ended> owner(count > 0 ? scopes : nullptr);
  for (int i = 0; i < count; ++i) {
    const int tag = dwarf_tag(&scopes[i]);
    if (tag != DW_TAG_inlined_subroutine && tag != DW_TAG_subprogram) continue;
    SourceFrame& frame = frames.back();
    if (std::string name = NameOf(&scopes[i]); !name.empty() && (frame.function.empty() || tag != DW_TAG_subprogram))
      frame.function = std::move(name);
    if (tag == DW_TAG_subprogram) return;
    SourceFrame caller = frame;
    frame.inlined = true;
    frame.offset = 0;
    caller.function.clear();
    SetCallPlace(unit, &scopes[i], caller);
    frames.push_back(caller);
  }
}

Symbols::Symbols(const Minidump& dump, const DumpBytes& bytes, const std::vector<std::string>& folders)
    : session_(std::make_unique<Session>(dump, bytes, folders)) {}

Symbols::~Symbols() = default;

std::vector<StackAddress> Symbols::Unwind(const DumpRegisters& registers, std::size_t most) {
  if (!session_->dwfl) return {};
  Session::Walk walk = {{}, most};
  session_->registers = &registers;
  dwfl_getthread_frames(session_->dwfl.get(), kThread, Session::AddFrame, &walk);
  return walk.addresses;
}

std::vector<SourceFrame> Symbols::FramesAt(const StackAddress& at) {
  const std::uint64_t place = at.Place();
  Dwfl_Module* const module = session_->dwfl ? dwfl_addrmodule(session_->dwfl.get(), place) : nullptr;
  if (!module) return {};
  SourceFrame frame;
  GElf_Off offset = 0;
  GElf_Sym symbol;
  const char* const name = dwfl_module_addrinfo(module, place, &offset, &symbol, nullptr, nullptr, nullptr);
  frame.offset = offset + (at.address - place);
  if (Dwfl_Line* const line = dwfl_module_getsrc(module, place))
    if (const char* const source = dwfl_lineinfo(line, nullptr, &frame.line, nullptr, nullptr, nullptr))
      frame.source = source;
  std::vector<SourceFrame> frames = {frame};
  session_->AddScopes(module, place, frames);
  if (name) {
    frames.back().function = Demangled(name);
    frames.back().inlined = false;
    frames.back().offset = frame.offset;
  }
  if (frames.back().function.empty() && frames.back().source.empty()) frames.pop_back();
  return frames;
}

ModuleFile Symbols::FileOf(const DumpModule& module) const {
  const auto index = std::size_t(&module - session_->dump.modules.data());
  return index < session_->located.size() ? session_->located[index].file : ModuleFile::kMissing;
}

}  // namespace kestrova
