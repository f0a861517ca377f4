// Builds a document's streams byte by byte, and the file with them.
#pragma once

#include <map>

#include "framework/stream_file.h"
#include "host/document/document_header.h"
#include "platform/paths.h"
#include "tests/objects/history_bytes.h"
#include "tests/platform/storage_support.h"

namespace kvtest {

// The object archive of a document of this release. It follows the layout and uses no code of the reader. Classes and
// objects have the numbers
//
//   1 HostDocument   2 the document   3 QFObject   4 QFBaseObject   5 QFObjectIndexerHelper   6 the helper
//
// then each new class and each node of the table of nodes.
class DocumentBytes {
 public:
  // One row of the table of nodes.
  struct Node {
    std::string className;
    int owner = -1;               // row
    int tool = -1;                // row, of an operation
    std::vector<int> users = {};  // rows
    int originalOwner = -1;       // row
  };

  // firstNumber is the number of the table's first row; WithIndexer needs a higher one.
  explicit DocumentBytes(std::vector<Node> nodes, int firstNumber = 7) : nodes_(std::move(nodes)), next_(firstNumber) {
    bytes_.NewClass("HostDocument", 1).Class(1).NewClass("QFObject", 8).NewClass("QFBaseObject", 2);
    Base({}, _T(""), 0, -1, -1, _T(""));
    bytes_.Dword(0).Dword(unsigned(nodes_.size()) + 1).Text(_T("SP4"));
    bytes_.NewClass("QFObjectIndexerHelper", 2).Class(5).Class(4).Word(0);  // no entries
    bytes_.Word(int(nodes_.size()));
    for (const Node& node : nodes_) {
      ClassRecord(node.className);
      objectNumbers_.push_back(next_++);
    }
    tableEnd_ = Size();
    for (std::size_t row = 0; row < nodes_.size(); ++row) {
      Record(row);
      ends_.push_back(Size());
    }
  }

  const std::string& Get() const { return bytes_.Get(); }
  // The byte after the table of nodes, and after each node's record.
  std::size_t TableEnd() const { return tableEnd_; }
  const std::vector<std::size_t>& Ends() const { return ends_; }
  // The label of a row's node.
  static Text LabelOf(std::size_t row) { return _T("N") + Text(1, TCHAR(_T('0') + row)); }

 private:
  std::size_t Size() const { return bytes_.Get().size(); }

  // The record of a class: with its name the first time, then as its number.
  void ClassRecord(const std::string& name, int schema = 1) {
    const auto [known, isNew] = classNumbers_.try_emplace(name, next_);
    if (!isNew) {
      bytes_.Class(known->second);
      return;
    }
    bytes_.NewClass(name, schema);
    ++next_;
  }
  void Reference(int row) {
    if (row < 0) {
      bytes_.Null();
    } else {
      bytes_.Object(objectNumbers_[std::size_t(row)]);
    }
  }

  // The fields after the class records of the two base levels.
  void Base(const std::vector<int>& users, TextView label, unsigned id, int owner, int originalOwner, TextView name) {
    bytes_.Word(int(users.size()));
    for (const int user : users) Reference(user);
    bytes_.Text(label).Text(_T("weber")).Text(_T("01/02/2024::03:04")).Text(_T("05/06/2024::07:08"));
    bytes_.Dword(id).Dword(0);
    Reference(owner);
    bytes_.Text(_T("okafor")).Word(0);
    Reference(originalOwner);
    bytes_.Dword(0xFFFFFFFF).Null().Text(name);
  }

  void Record(std::size_t row) {
    const Node& node = nodes_[row];
    const bool drilling = node.className == "HostDrilling";
    ClassRecord(node.className);
    if (drilling) ClassRecord("HostOperation");
    bytes_.Class(3).Class(4);
    const std::string name = drilling                       ? "HostOperation"
                             : node.className == "HostTool" ? "HostToolCrib"
                                                            : node.className;
    Base(node.users, LabelOf(row), unsigned(row) + 1, node.owner, node.originalOwner, Text(name.begin(), name.end()));
    if (node.className == "HostTool") {
      bytes_.Dword(2).Double(0.006).Double(0.05);
    } else if (node.className == "HostSetup") {
      for (const double value : {0.0, 0.0, 1.0, 0.1, 0.2, 0.0, 0.0, 0.0, 0.0, 0.025, 0.5}) bytes_.Double(value);
    } else if (node.className == "HostFeature") {
      bytes_.Word(2).Double(0.01).Double(0.02).Double(0.03).Double(0.04).Double(0.005);
    } else {
      Reference(node.tool);
      bytes_.Double(0.3).Double(2000).Double(0.001);
      ClassRecord("CFlaggedError", 2);
      bytes_.Dword(0).Dword(0);
      if (drilling) bytes_.Double(0.002);
    }
  }

  std::vector<Node> nodes_;
  RecordBytes bytes_;
  std::map<std::string, int> classNumbers_;
  std::vector<int> objectNumbers_;
  int next_;
  std::size_t tableEnd_ = 0;
  std::vector<std::size_t> ends_;
};

// The archive of a history without records.
inline std::string EmptyHistory() { return ManagerOf({}); }

// A bitwise CRC-32.
inline DWORD ReferenceChecksum(std::string_view bytes) {
  DWORD state = 0xFFFFFFFF;
  for (const char byte : bytes) {
    state ^= BYTE(byte);
    for (int bit = 0; bit < 8; ++bit) state = (state >> 1) ^ (state & 1 ? 0xEDB88320 : 0);
  }
  return ~state;
}
inline std::string WithChecksum(const std::string& bytes) {
  return RecordBytes().Bytes(bytes).Dword(ReferenceChecksum(bytes)).Get();
}
// The header for these streams.
inline std::string HeaderBytes(const std::string& objects, const std::string& history, float storageVersion = 38.0f) {
  RecordBytes bytes;
  bytes.Bytes("KVDOC\r\n\x1A").Dword(1).Raw(storageVersion).Dword(0);
  for (const std::string& stream : {objects, history})
    bytes.Raw(std::uint64_t(stream.size())).Dword(ReferenceChecksum(stream));
  return WithChecksum(bytes.Get());
}

// The bytes of a stream of a document's file.
inline std::string StreamOf(const std::string& path, LPCTSTR name) {
  IStorage* root = nullptr;
  IStream* stream = nullptr;
  const auto product = ProductPathFromSystem(path);
  EXPECT_EQ(StgOpenStorage(product.c_str(), nullptr, STGM_READ | STGM_SHARE_DENY_WRITE, nullptr, 0, &root), S_OK);
  EXPECT_EQ(root->OpenStream(name, nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, 0, &stream), S_OK);
  COleStreamFile file(stream);
  std::string bytes(std::size_t(file.GetLength()), '\0');
  EXPECT_EQ(file.Read(bytes.data(), UINT(bytes.size())), bytes.size());
  root->Release();
  return bytes;
}

// Writes a compound file with the streams that are not null.
inline void WriteDocumentFile(const std::string& path, const std::string* header, const std::string* objects,
                              const std::string* history, const std::string* settings = nullptr) {
  constexpr DWORD kMode = STGM_READWRITE | STGM_SHARE_EXCLUSIVE | STGM_CREATE;
  IStorage* root = nullptr;
  ASSERT_EQ(StgCreateDocfile(ProductPathFromSystem(path).c_str(), kMode, 0, &root), S_OK);
  for (const auto& [stream, bytes] : {std::pair{kestrova::kHeaderStream, header},
                                      {kestrova::kObjectsStream, objects},
                                      {kestrova::kHistoryStream, history},
                                      {kestrova::kSettingsStream, settings}}) {
    if (!bytes) continue;
    IStream* opened = nullptr;
    ASSERT_EQ(root->CreateStream(stream, kMode, 0, 0, &opened), S_OK);
    EXPECT_EQ(opened->Write(bytes->data(), ULONG(bytes->size()), nullptr), S_OK);
    opened->Release();
  }
  EXPECT_EQ(root->Commit(STGC_DEFAULT), S_OK);
  root->Release();
}

// Writes a file with the object archive, a correct header and the settings.
inline void WriteDocumentFile(const std::string& path, const std::string& objects,
                              const std::string* settings = nullptr) {
  const std::string history = EmptyHistory(), header = HeaderBytes(objects, history);
  WriteDocumentFile(path, &header, &objects, &history, settings);
}

}  // namespace kvtest
