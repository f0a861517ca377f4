// kestrova crash stack with a dump of this process: functions, lines and modules as they are here.
#include <elf.h>
#include <errno.h>
#include <link.h>
#include <ucontext.h>

#include "tests/host/json_schema.h"
#include "tests/host/minidump_builder.h"
#include "tests/host/run_command.h"

namespace {

using kvtest::MinidumpBuilder, kvtest::U32, kvtest::U64;

struct LoadedModule {
  U64 base, end;
  std::string path, build_id;
};

int AddModule(dl_phdr_info* info, std::size_t, void* modules) {
  LoadedModule module = {UINT64_MAX, 0, info->dlpi_name, ""};
  if (module.path.empty()) module.path = std::filesystem::read_symlink("/proc/self/exe").string();
  for (int i = 0; i < info->dlpi_phnum; ++i) {
    const ElfW(Phdr)& segment = info->dlpi_phdr[i];
    const U64 start = info->dlpi_addr + segment.p_vaddr;
    if (segment.p_type == PT_LOAD) {
      module.base = std::min<U64>(module.base, start & ~0xFFFULL);
      module.end = std::max<U64>(module.end, start + segment.p_memsz);
    }
    for (U64 at = start; segment.p_type == PT_NOTE && at + sizeof(ElfW(Nhdr)) < start + segment.p_memsz;) {
      const auto& note = *reinterpret_cast<const ElfW(Nhdr)*>(at);
      const auto* const name = reinterpret_cast<const char*>(&note + 1);
      const char* const id = name + ((note.n_namesz + 3) & ~3U);
      if (note.n_type == NT_GNU_BUILD_ID) module.build_id.assign(id, note.n_descsz);
      at = U64(id) + ((note.n_descsz + 3) & ~3U);
    }
  }
  static_cast<std::vector<LoadedModule>*>(modules)->push_back(module);
  return 0;
}

// A dump of this place: registers, the stack from here on, modules.
[[gnu::noinline]] std::string DumpOfThisPlace(bool changedIds) {
  MinidumpBuilder dump;
  ucontext_t here = {};
  getcontext(&here);
  const auto reg = [&](int index) { return U64(here.uc_mcontext.gregs[index]); };
  const std::string context =
      MinidumpBuilder::Context({reg(REG_RAX), reg(REG_RCX), reg(REG_RDX), reg(REG_RBX), reg(REG_RSP), reg(REG_RBP),
                                reg(REG_RSI), reg(REG_RDI), reg(REG_R8), reg(REG_R9), reg(REG_R10), reg(REG_R11),
                                reg(REG_R12), reg(REG_R13), reg(REG_R14), reg(REG_R15), reg(REG_RIP)});
  // Up to the arguments of main. Copied word by word: a sanitizer watches whole copies.
  std::string stack(std::min<U64>(16384, (U64(program_invocation_name) - reg(REG_RSP)) & ~7ULL), '\0');
  for (std::size_t i = 0; i < stack.size(); i += 8) {
    U64 word = 0;
    asm volatile("mov (%1), %0" : "=r"(word) : "r"(reg(REG_RSP) + i));
    std::memcpy(stack.data() + i, &word, sizeof word);
  }
  dump.AddList(3, {dump.Thread(7, dump.Range(reg(REG_RSP), stack), context)});
  std::vector<LoadedModule> modules;
  dl_iterate_phdr(AddModule, &modules);
  std::vector<std::string> records;
  for (LoadedModule& module : modules) {
    if (module.path.front() != '/' || module.build_id.empty()) continue;
    if (changedIds) module.build_id[0] ^= 1;
    records.push_back(dump.Module(module.base, U32(module.end - module.base), module.path, module.build_id));
  }
  dump.AddList(4, records);
  return dump.Whole();
}

[[gnu::noinline]] std::string CallerOfTheDump(bool changedIds) {
  std::string dump = DumpOfThisPlace(changedIds);
  asm volatile("");  // no jump in place of a call
  return dump;
}

struct CrashStack : kvtest::CommandTest {
  CrashStack() : CommandTest("crash") {}

  // The functions of the only thread's first frames.
  std::vector<std::string> Functions(const nlohmann::json& stack) {
    std::vector<std::string> functions;
    for (const auto& frame : stack["threads"][0]["frames"])
      functions.push_back(frame["function"].is_string() ? frame["function"].get<std::string>() : "");
    return functions;
  }
};

TEST_F(CrashStack, HasTheFunctionsOfThisProcess) {
  const std::string file = folder_.Write("here.dmp", CallerOfTheDump(/*changedIds=*/false)).string();
  const nlohmann::json stack = Json({"stack", file});
  EXPECT_EQ(kvtest::SchemaFault("crash-stack", stack.dump()), "");
  const std::vector<std::string> functions = Functions(stack);
  const auto has = [&](const char* name) {
    return std::any_of(functions.begin(), functions.end(),
                       [&](const std::string& function) { return function.find(name) != function.npos; });
  };
  EXPECT_TRUE(has("DumpOfThisPlace") && has("CallerOfTheDump")) << stack.dump(1);
  EXPECT_TRUE(has("CrashStack_HasTheFunctionsOfThisProcess_Test::TestBody") && has("main")) << stack.dump(1);
}

TEST_F(CrashStack, UsesNoFileWithAnotherBuildId) {
  const std::string file = folder_.Write("here.dmp", CallerOfTheDump(/*changedIds=*/true)).string();
  const kvtest::RunResult result = Run({"stack", file, "--json"});
  const nlohmann::json stack = nlohmann::json::parse(result.out, nullptr, /*allow_exceptions=*/false);
  for (const std::string& function : Functions(stack)) EXPECT_EQ(function, "");
  EXPECT_EQ(stack["modules"][0]["file"], "other build id") << result;
}

}  // namespace
