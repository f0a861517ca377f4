// Builds minidumps for tests: header, room for the directory, then everything in the order in which it was put.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace kvtest {

// The bytes of numbers on a little-endian machine.
template <class... Numbers>
std::string BytesOf(Numbers... numbers) {
  std::string bytes;
  (bytes.append(reinterpret_cast<const char*>(&numbers), sizeof numbers), ...);
  return bytes;
}

using U16 = std::uint16_t;
using U32 = std::uint32_t;
using U64 = std::uint64_t;

class MinidumpBuilder {
 public:
  // Appends bytes and returns their offset.
  U32 Put(const std::string& bytes) {
    bytes_ += bytes;
    return U32(bytes_.size() - bytes.size());
  }
  // A counted name in UTF-16; the name is ASCII.
  U32 PutName(const std::string& name) {
    std::string units;
    for (const char c : name) units += {c, '\0'};
    return Put(BytesOf(U32(units.size())) + units + std::string(2, '\0'));
  }
  // Appends a stream and returns its offset.
  U32 AddStream(U32 type, const std::string& bytes) {
    directory_ += BytesOf(type, U32(bytes.size()), U32(bytes_.size()));
    return Put(bytes);
  }
  U32 AddList(U32 type, const std::vector<std::string>& records) {
    std::string bytes = BytesOf(U32(records.size()));
    for (const std::string& record : records) bytes += record;
    return AddStream(type, bytes);
  }

  std::string Location(const std::string& bytes) { return BytesOf(U32(bytes.size()), Put(bytes)); }
  std::string Range(U64 address, const std::string& bytes) { return BytesOf(address) + Location(bytes); }
  // rax, rcx, rdx, rbx, rsp, rbp, rsi, rdi, r8 to r15, rip
  static std::string Context(const std::vector<U64>& registers) {
    std::string context(1232, '\0');
    const std::string selectors = BytesOf(U16(0x33), U16(0), U16(0), U16(0), U16(0), U16(0x2B), U32(0x10246));
    context.replace(56, selectors.size(), selectors);
    std::memcpy(context.data() + 120, registers.data(), registers.size() * sizeof(U64));
    return context;
  }
  std::string Thread(U32 id, const std::string& stack, const std::string& context) {
    return BytesOf(id, U32(0), U32(0), U32(0), U64(0)) + stack + Location(context);
  }
  std::string Module(U64 base, U32 size, const std::string& path, const std::string& buildId) {
    const U32 name = PutName(path);
    const std::string id = buildId.empty() ? std::string(8, '\0') : Location("LEpB" + buildId);
    return BytesOf(base, size, U32(0x1234), U32(0), name) + std::string(52, '\0') + id + std::string(24, '\0');
  }
  static std::string Exception(U32 thread, U32 code, U64 address, const std::vector<U64>& parameters,
                               const std::string& context) {
    std::string bytes = BytesOf(thread, U32(0), code, U32(0), U64(0), address, U32(parameters.size()), U32(0));
    for (const U64 parameter : parameters) bytes += BytesOf(parameter);
    bytes.resize(160);
    return bytes + context;
  }

  std::string Whole() const {
    std::string bytes = bytes_;
    const std::string header = BytesOf(U32(0x504D444D), U32(0xA793), U32(directory_.size() / 12), U32(32), U32(0),
                                       U32(1'700'000'000), U64(0)) +
                               directory_;
    return bytes.replace(0, header.size(), header);
  }

 private:
  static constexpr std::size_t kRoom = 32 + 16 * 12;
  std::string bytes_ = std::string(kRoom, '\0');
  std::string directory_;
};

// A crash at 0x40001010 in a library, called from 0x400020, which was called from 0x400040; another thread waits.
inline std::string SampleDump() {
  MinidumpBuilder dump;
  constexpr U64 kStack = 0x7FFF0000;
  const std::string stack =
      dump.Range(kStack, BytesOf(U64(1), U64(2), kStack + 0x20, U64(0x400020), U64(0), U64(0x400040), U64(0), U64(0)));
  std::vector<U64> registers(17);
  registers[4] = kStack, registers[5] = kStack + 0x10, registers[16] = 0x40001010;
  const std::string crashed = dump.Location(MinidumpBuilder::Context(registers));
  registers[4] = 0x7FFE0000, registers[5] = 0, registers[16] = 0x400060;
  const std::string other = MinidumpBuilder::Context(registers);
  const U32 service = dump.PutName("#1 SMP");
  dump.AddStream(7, BytesOf(U16(9), U16(6), U16(0), U16(2 + 256), U32(6), U32(1), U32(0), U32(0x8201), service) +
                        std::string(28, '\0'));
  dump.AddStream(6, MinidumpBuilder::Exception(71, 11, 0x40001010, {0xC0000005, 1, 0x18}, crashed));
  const std::string one = dump.Thread(70, dump.Range(0x7FFE0000, std::string(64, '\0')), other);
  const std::string two = dump.Thread(71, stack, other);
  dump.AddList(3, {one, two});
  const std::string program = dump.Module(0x400000, 0x1000, "/opt/kestrova/bin/kestrova", "\x12\xAB\xCD\xEF");
  const std::string library = dump.Module(0x40000000, 0x8000, "/opt/kestrova/lib/libKVSHAREu.so", "");
  dump.AddList(4, {library, program});
  dump.AddList(5, {stack, dump.Range(0x500000, "data")});
  const U32 name = dump.PutName("job 1");
  dump.AddList(24, {BytesOf(U32(71), U64(name))});
  dump.AddStream(15, BytesOf(U32(12), U32(1), U32(70)));
  dump.AddStream(10, std::string("a text\0", 7));
  dump.AddStream(0x47670006, std::string("kestrova\0job\0", 13));
  dump.AddStream(0x47670005, "NAME=x\nPRETTY_NAME=\"Some Linux 12\"\n");
  return dump.Whole();
}

}  // namespace kvtest
