// The XML schema of machine definitions, and the check by it. xmllint is another implementation of XML Schema: both
// must agree on whether a definition has a fault.
#include <gtest/gtest.h>

#include <cstdlib>
#include <set>

#include "share/machine/machine_schema.h"
#include "tests/folders.h"
#include "tests/scratch.h"

namespace {

using namespace kvtest;

TEST(MachineSchema, IsTheInstalledFile) {
  EXPECT_EQ(ReadFile(SourceFile("examples/machines/kestrova-apt.xsd")), MachineSchema())
      << "kestrova machine schema > examples/machines/kestrova-apt.xsd, then scripts/guides.py";
}

// Elements and attributes of the schema; the first child of each is its annotation.
void ExpectAnnotations(KVXMLElement element, std::set<std::string>& named) {
  const std::string_view name = element.Name();
  if (name == "xs:element" || name == "xs:attribute" || name == "xs:simpleType") {
    const KVXMLAttribute at = element.FirstAttribute();
    if (at.Name() == "name") {
      named.emplace(at.Value());
      EXPECT_EQ(element.FirstChild().Name(), "xs:annotation") << at.Value();
    }
  }
  for (KVXMLElement child = element.FirstChild(); child; child = child.NextSibling()) ExpectAnnotations(child, named);
}

TEST(MachineSchema, ExplainsEachName) {
  KVXMLDocument document;
  KVXMLNode* const root = document.LoadFromMemory(MachineSchema());
  ASSERT_NE(root, nullptr);
  std::set<std::string> named;
  ExpectAnnotations(root->Element(), named);
  EXPECT_GT(named.size(), 70u);
}

#define ROOT(content) "<KESTROVAAPT>" content "</KESTROVAAPT>"
#define TARGET(attributes) \
  ROOT("<CHANNELS NUM='1'><CHANNEL><TARGET TYPE='Turret' " attributes "/></CHANNEL></CHANNELS>")
#define SHAPE(attributes, content) \
  ROOT("<SHAPES NUM='1'><SHAPE ID='1' PATH='a' " attributes ">" content "</SHAPE></SHAPES>")
#define TOOLLIST(attributes) ROOT("<SHAPELISTS><TOOLSHAPELIST " attributes "/></SHAPELISTS>")

// A definition and the findings, without places.
const std::pair<const char*, const char*> kCases[] = {
    {ROOT(""), ""},
    {"<KESTROVAAPT xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xsi:noNamespaceSchemaLocation='a.xsd'/>", ""},
    {"<KESTROVAAPT xsi:schemaLocation='a a.xsd'/>", "attribute \"xsi:schemaLocation\" is not allowed in KESTROVAAPT\n"},
    {"<!-- a--b -->" ROOT(""), "-- is inside a comment\n"},
    {ROOT("<MACHINE VER='1' VER='2'/>"), "attribute VER occurs twice\n"},
    {"<R/>", "the root element is \"R\" and not KESTROVAAPT\n"},
    {"<KESTROVAAPT A='1'/>", "attribute \"A\" is not allowed in KESTROVAAPT\n"},
    {ROOT("text"), "KESTROVAAPT contains text; only elements are allowed\n"},
    {ROOT("<MACHINE>x</MACHINE>"), "MACHINE contains text; only elements are allowed\n"},
    {ROOT("<MACHINE VER=''><A/></MACHINE>"), "element \"A\" is not allowed in MACHINE\n"},
    {ROOT("<Machine/>"), "element \"Machine\" is written MACHINE\n"},
    {ROOT("<SHAPES NUM='1'/><CHANNELS NUM=' 1 '/><SHAPES NUM='2'/>"), ""},
    {ROOT("<CHANNELS/>"), "CHANNELS needs the attribute NUM\n"},
    {ROOT("<CHANNELS NUM='0'/>"), "NUM=\"0\" is not an integer from 1 to 10000\n"},
    {ROOT("<CHANNELS NUM='10001'/>"), "NUM=\"10001\" is not an integer from 1 to 10000\n"},
    {TARGET("ID='+7'"), ""},
    {TARGET("ID='2147483647'"), ""},
    {TARGET("ID='-2147483648'"), ""},
    {TARGET("ID='2147483648'"), "ID=\"2147483648\" is not an integer\n"},
    {TARGET("ID='1.0'"), "ID=\"1.0\" is not an integer\n"},
    {TARGET("ID=''"), "ID=\"\" is not an integer\n"},
    {TARGET("STATIONS='-1'"), "STATIONS=\"-1\" is not an integer from 0\n"},
    {TARGET("DIAM=' 12.5 '"), ""},
    {TARGET("DIAM='.5' XOFF='5.' YOFF='-1e5' ZOFF='1E+4'"), ""},
    {TARGET("DIAM='12,5'"), "DIAM=\"12,5\" is not a number from -100000 to 100000\n"},
    {TARGET("DIAM='100001'"), "DIAM=\"100001\" is not a number from -100000 to 100000\n"},
    {TARGET("DIAM='1e999'"), "DIAM=\"1e999\" is not a number from -100000 to 100000\n"},
    {TARGET("DIAM='NaN'"), "DIAM=\"NaN\" is not a number from -100000 to 100000\n"},
    {TARGET("DIAM='.'"), "DIAM=\".\" is not a number from -100000 to 100000\n"},
    {TARGET("DIAM='0x10'"), "DIAM=\"0x10\" is not a number from -100000 to 100000\n"},
    {TARGET("ROT_ABOUT='-Z'"), ""},
    {TARGET("ROT_ABOUT='Z'"), "ROT_ABOUT=\"Z\" is not one of +X, +Y, +Z, -X, -Y, -Z\n"},
    {TARGET("ROT_ABOUT=' +Z'"), "ROT_ABOUT=\" +Z\" is not one of +X, +Y, +Z, -X, -Y, -Z\n"},
    {ROOT("<CHANNELS NUM='1'><CHANNEL><TARGET/></CHANNEL></CHANNELS>"), "TARGET needs the attribute TYPE\n"},
    {ROOT("<CHANNELS NUM='1'><CHANNEL><TARGET TYPE='fixture'/></CHANNEL></CHANNELS>"),
     "TYPE=\"fixture\" is not one of Turret, Horiz Head, Vert Head, Rail, Other, Head, Fixture\n"},
    {ROOT("<CHANNELS NUM='1'><CHANNEL><TARGET TYPE='Head'><TOOL LOC=' 1  2 -3e2 ' POS='0'/><TOOL LOC='1 2'/>"
          "<TOOL LOC='1,5 2 3'/></TARGET></CHANNEL></CHANNELS>"),
     "POS=\"0\" is not an integer from 1\nLOC=\"1 2\" is not three numbers with blanks between them\n"
     "LOC=\"1,5 2 3\" is not three numbers with blanks between them\n"},
    {SHAPE("PTYPE='Head' PARENT=''", "<HOME C='1'/><OFFSET X='0'/><ORIGIN_OFFSET X='0'/>"), ""},
    {SHAPE("", "<OFFSET A='0'/>"), "attribute \"A\" is not allowed in OFFSET\n"},
    {SHAPE("PTYPE='x'", ""), "PTYPE=\"x\" is not one of Fixed, X, Y, Z, A, B, C, Rear1, Front1, Rear2, Front2, Head\n"},
    {SHAPE("", "<DISPLAY RGB='0 +7 255' VISIBLE='FALSE' METALLIC='&#10;'/>"), ""},
    {SHAPE("", "<DISPLAY RGB='1 2 256' VISIBLE='true'/>"),
     "RGB=\"1 2 256\" is not three integers from 0 to 255 with blanks between them\n"
     "VISIBLE=\"true\" is not one of TRUE, FALSE\n"},
    {ROOT("<SHAPES NUM='1'><SHAPE ID='1' PATH=''/></SHAPES>"), "PATH=\"\" is not a text\n"},
    {TOOLLIST("NUM='1' LIST=' 4 , 7'"), ""},
    {TOOLLIST("NUM='2' LIST='4,'"), "LIST=\"4,\" is not integers with commas between them\n"},
    {TOOLLIST("NUM='2' LIST='4 7'"), "LIST=\"4 7\" is not integers with commas between them\n"},
    {TOOLLIST("NUM='1' LIST='1' AXIS='W' CHANNEL='-1'"),
     "AXIS=\"W\" is not one of X, Y, Z, A, B, C\nCHANNEL=\"-1\" is not an integer from 0 to 10000\n"},
    {TOOLLIST(""), "TOOLSHAPELIST needs the attribute NUM\nTOOLSHAPELIST needs the attribute LIST\n"},
};

TEST(MachineSchema, FindsWhatAnotherValidatorFinds) {
  const ScratchFolder folder;
  folder.Write("s.xsd", MachineSchema());
  std::string files;
  std::set<std::string> faulty;
  for (std::size_t row = 0; row < std::size(kCases); ++row) {
    const auto& [definition, expected] = kCases[row];
    std::string found;
    for (const MachineFinding& finding : CheckMachineTextBySchema(definition).findings) found += finding.text + "\n";
    EXPECT_EQ(found, expected) << definition;
    const std::string name = std::to_string(row) + ".xml";
    folder.Write(name, definition);
    files += ' ' + name;
    if (*expected) faulty.insert(name);
  }
  const std::string line = "cd '" + folder.Path().string() + "' && xmllint --noout --schema s.xsd" + files + " 2>out";
  EXPECT_EQ(WEXITSTATUS(std::system(line.c_str())), 3) << "3: some don't validate; 127: libxml2-utils is missing";
  const std::string out = ReadFile(folder.Path() / "out");
  for (std::size_t row = 0; row < std::size(kCases); ++row) {
    const std::string name = std::to_string(row) + ".xml";
    const bool validates = ("\n" + out).find("\n" + name + " validates") != std::string::npos;
    EXPECT_EQ(validates, !faulty.contains(name)) << kCases[row].first << '\n' << out;
  }
}

TEST(MachineSchema, GivesPlaces) {
  const MachineCheckResult result = CheckMachineTextBySchema("<KESTROVAAPT>\n <MACHINE\n  ver='1'/></KESTROVAAPT>");
  ASSERT_EQ(result.findings.size(), 1u);
  EXPECT_EQ(result.findings[0].place.line, 3);
  EXPECT_EQ(result.findings[0].place.column, 3);
  EXPECT_EQ(CheckMachineTextBySchema("<K").failure.kind, KVXMLFailure::Kind::kMalformed);
}

}  // namespace
