// The program headers of the programs and of the library: what the options of the build promise for them.
#include <elf.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tests/folders.h"
#include "tests/scratch.h"

namespace {

class ElfFile {
 public:
  explicit ElfFile(const std::string& name) : bytes_(kvtest::ReadFile(kvtest::BuiltFile(name))) {
    header_ = At<Elf64_Ehdr>(0);
    for (std::size_t i = 0; i < header_.e_phnum; ++i)
      segments_.push_back(At<Elf64_Phdr>(header_.e_phoff + i * header_.e_phentsize));
    const Elf64_Phdr dynamic = Segment(PT_DYNAMIC).value_or(Elf64_Phdr{});
    for (std::size_t at = 0; at < dynamic.p_filesz; at += sizeof(Elf64_Dyn))
      entries_.push_back(At<Elf64_Dyn>(dynamic.p_offset + at));
  }

  unsigned Type() const { return header_.e_type; }
  std::optional<Elf64_Phdr> Segment(unsigned type) const {
    for (const Elf64_Phdr& segment : segments_)
      if (segment.p_type == type) return segment;
    return {};
  }
  bool HasWritableCode() const {
    for (const Elf64_Phdr& segment : segments_)
      if (segment.p_type == PT_LOAD && (segment.p_flags & PF_W) && (segment.p_flags & PF_X)) return true;
    return false;
  }
  std::optional<std::uint64_t> Entry(Elf64_Sxword tag) const {
    for (const Elf64_Dyn& entry : entries_)
      if (entry.d_tag == tag) return entry.d_un.d_val;
    return {};
  }
  bool HasFlag(Elf64_Sxword tag, std::uint64_t flag) const { return Entry(tag).value_or(0) & flag; }
  // The names of imported and exported symbols and of libraries, each with a NUL before and after it.
  std::string Names() const {
    for (const Elf64_Phdr& segment : segments_) {
      const std::uint64_t table = Entry(DT_STRTAB).value_or(0) - segment.p_vaddr;
      if (segment.p_type == PT_LOAD && table < segment.p_filesz)
        return bytes_.substr(segment.p_offset + table, Entry(DT_STRSZ).value_or(0));
    }
    return {};
  }

 private:
  template <class Record>
  Record At(std::size_t place) const {
    Record record = {};
    if (place + sizeof record <= bytes_.size()) std::memcpy(&record, bytes_.data() + place, sizeof record);
    return record;
  }

  const std::string bytes_;
  Elf64_Ehdr header_;
  std::vector<Elf64_Phdr> segments_;
  std::vector<Elf64_Dyn> entries_;
};

TEST(Hardening, OfTheProgramsAndTheLibrary) {
#ifndef __SSP_STRONG__
  GTEST_SKIP() << "this build has KV_HARDENING=OFF";
#endif
  for (const char* name : {"bin/kestrova", "bin/test_house", "lib/libKVSHAREdesktop.so", "lib/libKVSHAREu.so"}) {
    SCOPED_TRACE(name);
    const bool desktop = std::string(name).find("desktop") != std::string::npos;
    if (desktop && !std::filesystem::exists(kvtest::BuiltFile(name))) continue;  // KV_DESKTOP=OFF
    const ElfFile file(name);
    EXPECT_EQ(file.Type(), unsigned(ET_DYN)) << "loaded at a random address";
    EXPECT_FALSE(file.HasWritableCode());
    const auto stack = file.Segment(PT_GNU_STACK);
    EXPECT_TRUE(stack && !(stack->p_flags & PF_X)) << "code on the stack";
    EXPECT_TRUE(file.Segment(PT_GNU_RELRO) && file.HasFlag(DT_FLAGS, DF_BIND_NOW)) << "no writable import table";
    EXPECT_FALSE(file.Entry(DT_TEXTREL));
    EXPECT_FALSE(file.Entry(DT_RPATH)) << "LD_LIBRARY_PATH would not replace the library";
    const std::string names = file.Names();
    EXPECT_NE(names.find(std::string("\0__stack_chk_fail\0", 18)), names.npos);
#ifdef _FORTIFY_SOURCE
    EXPECT_TRUE(desktop || names.find(std::string("_chk\0", 5)) != names.npos) << "no checked calls";
#endif
    const bool program = std::string(name).starts_with("bin/");
    EXPECT_EQ(file.HasFlag(DT_FLAGS_1, DF_1_PIE), program);
    EXPECT_EQ(names.find("libQt") != names.npos, desktop) << "Qt is loaded only when it is needed";
    if (!program && !desktop) {
      EXPECT_STREQ(names.c_str() + file.Entry(DT_SONAME).value_or(0), "libKVSHAREu.so.0.1");
    }
  }
}

}  // namespace
