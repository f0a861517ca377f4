// The reader of minidumps with damaged files, and stacks by the chain of frame pointers.
#include <gtest/gtest.h>

#include <functional>

#include "host/crash/stack_walk.h"
#include "tests/host/minidump_builder.h"

namespace {

using namespace kestrova;
using kvtest::U32, kvtest::U64;

Minidump Read(const std::string& bytes) {
  Minidump dump;
  DumpFault failure;
  EXPECT_TRUE(ReadMinidump(DumpInMemory(bytes), dump, failure)) << failure.byte << ' ' << failure.reason;
  return dump;
}

void Set(std::string& bytes, std::size_t at, U32 value) { bytes.replace(at, 4, kvtest::BytesOf(value)); }

// The place in the directory of a stream, and the stream's offset.
std::size_t EntryOf(const std::string& bytes, U32 type) {
  std::size_t at = 32;
  while (NumberAt<U32>(bytes, at) != type) at += 12;
  return at;
}
std::size_t StreamOf(const std::string& bytes, U32 type) { return NumberAt<U32>(bytes, EntryOf(bytes, type) + 8); }

TEST(Minidump, IsReadWhole) {
  const Minidump dump = Read(kvtest::SampleDump());
  EXPECT_TRUE(dump.faults.empty()) << dump.faults[0].reason;
  ASSERT_TRUE(dump.system && dump.exception && dump.process);
  EXPECT_EQ(dump.system->text + dump.command_line + dump.comment, "#1 SMPkestrova joba text");
  EXPECT_EQ(dump.exception->signal, 11u);
  EXPECT_EQ(dump.exception->code, 0xC0000005u) << "a dump of Linux has it in its parameters";
  EXPECT_EQ(dump.exception->parameters, (std::vector<U64>{1, 0x18}));
  EXPECT_EQ(dump.exception->registers->rip, 0x40001010u) << "of the crash";
  EXPECT_EQ(dump.ThreadWith(71)->registers->rip, 0x400060u) << "when the dump was written";
  EXPECT_EQ(dump.ThreadWith(71)->registers->cs, 0x33);
  EXPECT_EQ(dump.ThreadWith(71)->name, "job 1");
  ASSERT_EQ(dump.modules.size(), 2u);
  EXPECT_EQ(dump.modules[0].build_id, "\x12\xAB\xCD\xEF") << "sorted by base";
  EXPECT_EQ(dump.ModuleAt(0x40007FFF), &dump.modules[1]);
  EXPECT_EQ(dump.ModuleAt(0x40008000), nullptr);
  EXPECT_EQ(dump.memory.size(), 3u) << "a stack in both lists counts once";
}

TEST(Minidump, DamageIsReportedWithItsByteAndTheRestIsRead) {
  struct Case {
    std::function<void(std::string& bytes)> damage;
    std::function<std::size_t(const std::string& bytes)> byte;
    const char* reason;
  };
  const auto at = [](U32 type, std::size_t offset) {
    return [=](const std::string& bytes) { return StreamOf(bytes, type) + offset; };
  };
  const auto set = [](U32 type, std::size_t offset, U32 value) {
    return [=](std::string& bytes) { Set(bytes, StreamOf(bytes, type) + offset, value); };
  };
  const auto entry = [](U32 type, std::size_t offset, U32 value) {
    return [=](std::string& bytes) { Set(bytes, EntryOf(bytes, type) + offset, value); };
  };
  const auto entryOf = [](U32 type) { return [=](const std::string& bytes) { return EntryOf(bytes, type); }; };
  const Case cases[] = {
      {[](std::string& bytes) { Set(bytes, 4, 1); }, [](const std::string&) { return 4; }, "the version is 0x0001"},
      {set(3, 0, 0xFFFFFFFF), at(3, 0), "the thread list has 4294967295 records by its count, its stream has room for"},
      {set(4, 0, 3), at(4, 0), "the module list has 3 records by its count, its stream has room for 2, and 2 are"},
      {entry(5, 4, 0xFFFFFFF0), entryOf(5), "stream 0x5 is said to be 4294967280 bytes at byte"},
      {entry(5, 8, 0xFFFFFFF0), entryOf(5), "stream 0x5 is said to be 36 bytes at byte 4294967280, and the file has"},
      {entry(15, 0, 3), [](const std::string&) { return 32 + 6 * 12; }, "a second stream 0x3, which is left out"},
      {entry(6, 4, 167), at(6, 0), "the exception needs 168 bytes, and its stream has 167"},
      {set(6, 32, 16), at(6, 32), "the exception has 16 parameters"},
      {set(6, 164, 0x7FFFFFFF), at(6, 160), "the registers of a thread is said to be 256 bytes at byte 2147483647"},
      {set(6, 160, 255), at(6, 160), "the registers of a thread have 255 bytes, and they need 256"},
      {set(3, 4 + 32, 0x7FFFFFFF), at(3, 4 + 24), "memory of 2147483647 bytes is said to be at byte"},
      {set(3, 4 + 28, 0xFFFFFFFF), nullptr, ""},
      {set(4, 4 + 20, 0xFFFFFFFF), at(4, 4 + 20), "the name of a module is said to be 4 bytes at byte 4294967295"},
      {set(4, 4 + 8, 0), at(4, 4), "a module of 0 bytes at address 0x40000000, which is left out"},
      {set(4, 4, 0x400FFF), at(4, 0), "the module /opt/kestrova/lib/libKVSHAREu.so at address 0x400fff is inside /opt"},
      {set(24, 12, 0xFFFFFFFF), at(24, 4), "a thread's name is said to be 4 bytes at byte 1844674"},
      {set(7, 0, 0), at(7, 0), "the processor architecture is 0"},
  };
  for (const Case& each : cases) {
    std::string bytes = kvtest::SampleDump();
    each.damage(bytes);
    const Minidump dump = Read(bytes);
    ASSERT_EQ(dump.faults.size(), each.byte ? 1u : 0u) << each.reason;
    if (!each.byte) continue;
    EXPECT_EQ(dump.faults[0].reason.substr(0, std::strlen(each.reason)), each.reason);
    EXPECT_EQ(dump.faults[0].byte, each.byte(bytes)) << each.reason;
  }
}

TEST(Minidump, EachCutOneIsRefusedOrHasFaults) {
  const std::string whole = kvtest::SampleDump();
  for (std::size_t size = 0; size < whole.size(); ++size) {
    Minidump dump;
    DumpFault failure;
    if (ReadMinidump(DumpInMemory(std::string_view(whole).substr(0, size)), dump, failure)) {
      EXPECT_FALSE(dump.faults.empty()) << size;
    } else {
      EXPECT_LE(failure.byte, size) << failure.reason;
    }
  }
}

TEST(StackWalk, FollowsFramePointersAndReturnsFromACallOfNull) {
  std::string bytes = kvtest::SampleDump();
  const std::size_t context = NumberAt<U32>(bytes, StreamOf(bytes, 6) + 164);
  const auto addresses = [&](std::size_t most) {
    const Minidump dump = Read(bytes);
    const DumpInMemory memory(bytes);
    Symbols symbols(dump, memory, {});
    const ThreadStack stack = StackOf(dump, memory, *dump.ThreadWith(71), most, symbols);
    std::vector<U64> found;
    for (const StackFrame& frame : stack.frames) found.push_back(frame.address);
    EXPECT_EQ(stack.more, found.size() == most);
    return found;
  };
  EXPECT_EQ(addresses(9), (std::vector<U64>{0x40001010, 0x400020, 0x400040}));
  EXPECT_EQ(addresses(2), (std::vector<U64>{0x40001010, 0x400020}));
  Set(bytes, context + 248, 0);                  // the instruction
  Set(bytes, context + 152, 0x7FFF0000 + 0x18);  // the stack, on top of which is a return address
  EXPECT_EQ(addresses(9), (std::vector<U64>{0, 0x400020})) << "the frame pointer is below the stack";
}

}  // namespace
