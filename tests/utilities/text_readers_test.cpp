// QFAsciFileBrowse and CSVReader with valid and hostile files.
#include <cmath>

#include "share/utilities/ascii_file_browse.h"
#include "share/utilities/csv_reader.h"
#include "tests/utilities/files_fixture.h"
#include "tests/values.h"

namespace {

namespace fs = std::filesystem;

class TextReaders : public kvtest::FilesTest {
 protected:
  CString Write(const std::string& name, const std::string& bytes) {
    folder.Write(name, bytes);
    return At(name);
  }
};

// All lines of the file, in brackets.
std::string Lines(QFAsciFileBrowse& file) {
  std::string all;
  CString line;
  for (int read = file.GetFirstLine(line); read; read = file.GetNextLine(line)) all += "[" + ToUtf8(line) + "]";
  EXPECT_EQ(file.IsEndOfFile(), 1);
  return all;
}

TEST_F(TextReaders, LinesAreCutAtTabsAndEnds) {
  const std::string piece(254, 'x');
  const std::pair<std::string, std::string> rows[] = {
      {"", ""},
      {"one\r\ntwo", "[one][two]"},
      {"\xEF\xBB\xBFone\n\xEF\xBB\xBFtwo", "[one][\xEF\xBB\xBFtwo]"},
      {"\xEF\xBB\xBF", ""},
      {"\xEF\xBB", "[\xEF\xBF\xBD]"},
      {"one\ttwo\tthree\nfour\n", "[one][four]"},
      {"\tone\n\n\t\n\r\nlast\r", "[][][][][last\r]"},
      {"Werkst\u00FCck\n", "[Werkst\u00FCck]"},
      {std::string("a\0b\nc\n", 6), "[a][c]"},
      {piece + piece + "end", "[" + piece + "][" + piece + "][end]"},
      {piece.substr(1) + "\r\nnext", "[" + piece.substr(1) + "][next]"},
      {piece.substr(1) + "\rnext", "[" + piece.substr(1) + "\r][next]"},
      {std::string(254, '\0').append("a\n"), "[][a]"},
  };
  int number = 0;
  for (const auto& [bytes, lines] : rows) {
    QFAsciFileBrowse file;
    EXPECT_EQ(file.SetFilePath(Write(std::to_string(++number), bytes)), 1);
    EXPECT_EQ(Lines(file), lines) << number;
    EXPECT_EQ(Lines(file), lines) << number << " again";
  }
}

TEST_F(TextReaders, SamePathIsNotOpenedAgain) {
  const CString path = Write("a", "one\ntwo\n");
  QFAsciFileBrowse file;
  CString line = _T("kept");
  EXPECT_EQ(file.IsEndOfFile(), 1);
  EXPECT_EQ(file.InitialiseFile(), 0);
  EXPECT_EQ(file.GetFirstLine(line), 0);
  EXPECT_EQ(file.GetNextLine(line), 0);
  EXPECT_EQ(line, _T("kept"));
  EXPECT_EQ(file.SetFilePath(path), 1);
  EXPECT_EQ(file.IsEndOfFile(), 0);
  EXPECT_EQ(file.GetNextLine(line), 1);
  EXPECT_EQ(file.SetFilePath(path), 0);
  EXPECT_EQ(file.GetNextLine(line), 1);
  EXPECT_EQ(line, _T("two")) << "it was rewound";
  EXPECT_EQ(file.InitialiseFile(), 1);
  EXPECT_EQ(file.GetNextLine(line), 1);
  EXPECT_EQ(line, _T("one"));
  EXPECT_EQ(file.SetFilePath(path + _T("none")), 1);
  EXPECT_EQ(file.GetNextLine(line), 0);
  EXPECT_EQ(file.IsEndOfFile(), 1);
}

TEST_F(TextReaders, SizeIsReadOncePerPath) {
  const CString path = Write("a", "12345");
  QFAsciFileBrowse file;
  EXPECT_EQ(file.GetFileSize(), ~0ULL);
  file.SetFilePath(path);
  EXPECT_EQ(file.GetFileSize(), 5u);
  Write("a", "1234567");
  EXPECT_EQ(file.GetFileSize(), 5u);
  file.SetFilePath(At(""));
  EXPECT_EQ(file.GetFileSize(), ~0ULL) << "a folder has none";
  fs::resize_file(On("a"), std::uintmax_t(4) << 30);  // a sparse file
  file.SetFilePath(path);
  EXPECT_EQ(file.GetFileSize(), 4ULL << 30);
}

TEST_F(TextReaders, CellsAreAddressedByLetterAndNumber) {
  const CString path = Write("a.csv",
                             "\xEF\xBB\xBF"
                             "a1,a2,a3\r\n b1 ,,\"b3\",b4\n\nd1\nlast");
  const std::tuple<char, int, LPCTSTR> cells[] = {
      {'b', 3, _T("\"b3\"")}, {'A', 1, _T("a1")},     {'A', 3, _T("a3")}, {'A', 4, _T("")}, {'B', 1, _T(" b1 ")},
      {'B', 2, _T("")},       {'C', 1, _T("")},       {'D', 2, _T("")},   {'F', 1, _T("")}, {'E', 1, _T("last")},
      {'A', INT_MAX, _T("")}, {'A', INT_MIN, _T("")}, {'A', 0, _T("")},   {'@', 1, _T("")}, {'\xC1', 1, _T("")},
  };
  for (const auto& [row, column, text] : cells)
    EXPECT_EQ(CSVReader(path).GetStringFromCell(row, column), text) << row << column;
  EXPECT_EQ(CSVReader(path + _T("none")).GetStringFromCell('A', 1), _T(""));
  std::string lines;
  for (int i = 1; i <= 63; ++i) lines += std::to_string(i) + "\n";
  EXPECT_EQ(CSVReader(Write("many.csv", lines)).GetIntFromCell('\x7F', 1), 63);
}

TEST_F(TextReaders, CellsAreNumbers) {
  const CSVReader reader(Write("a.csv", "1.5,-2e3, 7 mm,,x,99999999999,1e999\n"));
  const double reals[] = {1.5, -2000, 7, 0, 0, 99999999999, HUGE_VAL, 0};
  const int integers[] = {1, -2, 7, 0, 0, INT_MAX, 1, 0};
  for (int i = 0; i < 8; ++i) {
    EXPECT_EQ(reader.GetDoubleFromCell('A', i + 1), reals[i]) << i;
    EXPECT_EQ(reader.GetIntFromCell('A', i + 1), integers[i]) << i;
  }
  Write("a.csv", "2");
  EXPECT_EQ(reader.GetIntFromCell('A', 1), 2) << "each call reads the file anew";
}

TEST_F(TextReaders, BlocksOfCellsAreGeometry) {
  const CSVReader reader(Write("a.csv", "x,0,1,0\nx,-1,0,0\nx,0,0,2\nx,10,20,30\n"));
  const auto text = [](const auto& v) { return kvtest::Values(v.x(), v.y(), v.z()); };
  EXPECT_EQ(text(reader.GetPositionFromCell('D', 2)), "10|20|30");
  EXPECT_EQ(text(reader.GetVectorFromCell('D', 3)), "20|30|0");
  EXPECT_EQ(text(reader.GetUnitVectorFromCell('C', 2)), "0|0|1");
  EXPECT_EQ(reader.GetUnitVectorFromCell('Z', INT_MAX).len(), 0);
  const FRTransf transform = reader.GetTransformFromCell('a', 2);
  std::vector<double> affine;
  for (int i = 0; i < 9; ++i) affine.push_back(transform.affine().element(i / 3, i % 3));
  EXPECT_EQ(affine, std::vector({0., 1., 0., -1., 0., 0., 0., 0., 2.}));
  EXPECT_EQ(transform.translation().z(), 30);
  EXPECT_EQ(transform.get_scaling_part(), 1);
  EXPECT_EQ(reader.GetTransformFromCell('\x7F', 1).translation().len(), 0);
}

TEST_F(TextReaders, HostileCellsAreBounded) {
  const std::string most(1024 * 1024, 'x');
  const CSVReader reader(Write("a.csv", most + "," + most + "y,z\n" + std::string(100'000, ',') + "far\n"));
  EXPECT_EQ(reader.GetStringFromCell('A', 1).GetLength(), int(most.size()));
  EXPECT_EQ(reader.GetStringFromCell('A', 2) + reader.GetStringFromCell('A', 3), _T("z")) << "more than a megabyte";
  EXPECT_EQ(reader.GetStringFromCell('B', 100'001), _T("far"));
  const CSVReader nul(Write("b.csv", std::string("a\0b,c\nd,\xFF\n", 11)));
  EXPECT_EQ(kvtest::Values(nul.GetStringFromCell('A', 1), nul.GetStringFromCell('A', 2), nul.GetStringFromCell('B', 2)),
            "a||\uFFFD");
}

}  // namespace
