#include "share/machine/machine_schema.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "share/machine/internal/check_findings.h"
#include "share/machine/internal/machine_grammar.h"
#include "share/machine/internal/machine_numbers.h"
#include "share/machine/internal/machine_words.h"

namespace {

using namespace kvmachine;

// ---- the forms of values

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  return first == text.npos ? std::string_view() : text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

std::size_t SkipDigits(std::string_view text, std::size_t at) {
  const std::size_t end = text.find_first_not_of("0123456789", at);
  return end == text.npos ? text.size() : end;
}

std::size_t SkipSign(std::string_view text, std::size_t at) {
  return at < text.size() && (text[at] == '+' || text[at] == '-') ? at + 1 : at;
}

bool IsInteger(std::string_view text) {
  const std::size_t first = SkipSign(text, 0);
  return first < text.size() && SkipDigits(text, first) == text.size();
}

bool IsIntegerFrom(std::string_view text, IntegerRange range) {
  text = Trimmed(text);
  NumberNotes notes;
  const int value = ReadInteger(text, &notes);
  // The notes call the two limits of int clamped, too.
  return IsInteger(text) && value >= range.least && value <= range.most &&
         (!notes.clamped || text == "2147483647" || text == "+2147483647" || text == "-2147483648");
}

// Digits with an optional sign, point and exponent.
bool IsNumber(std::string_view text) {
  const std::size_t first = SkipSign(text, 0);
  std::size_t at = SkipDigits(text, first);
  std::size_t digits = at - first;
  if (at < text.size() && text[at] == '.') {
    const std::size_t end = SkipDigits(text, at + 1);
    digits += end - at - 1;
    at = end;
  }
  if (digits == 0) return false;
  if (at == text.size()) return true;
  return (text[at] == 'e' || text[at] == 'E') && IsInteger(text.substr(at + 1));
}

bool IsReal(std::string_view text) {
  std::size_t used = 0;
  text = Trimmed(text);
  const double value = ToDouble(text, used);
  return IsNumber(text) && value >= kLeastReal && value <= kMostReal;
}

bool IsThree(std::string_view text, bool (*isOne)(std::string_view)) {
  int count = 0;
  for (text = Trimmed(text); !text.empty(); ++count) {
    const std::size_t end = std::min(text.find_first_of(" \t\r\n"), text.size());
    if (!isOne(text.substr(0, end))) return false;
    text = Trimmed(text.substr(end));
  }
  return count == 3;
}

bool IsVector(std::string_view text) { return IsThree(text, IsNumber); }
bool IsColour(std::string_view text) {
  return IsThree(text, [](std::string_view part) { return IsIntegerFrom(part, {0, 255}); });
}

bool IsIdList(std::string_view text) {
  constexpr std::size_t kMostDigits = 10;
  while (true) {
    const std::size_t comma = text.find(',');
    std::string_view item = text.substr(0, comma);
    item.remove_prefix(std::min(item.find_first_not_of(' '), item.size()));
    item = item.substr(0, item.find_last_not_of(' ') + 1);
    if (!IsInteger(item) || item.size() - SkipSign(item, 0) > kMostDigits) return false;
    if (comma == text.npos) return true;
    text.remove_prefix(comma + 1);
  }
}

// ---- the words of the enumerations

template <class Enumeration>
std::vector<std::string_view> WordsOfEnumeration() {
  constexpr int kMostValues = 16;
  std::vector<std::string_view> words;
  for (int number = 0; number < kMostValues; ++number) {
    const std::string_view text = TextOf(Enumeration(number));
    Enumeration read;
    if (!text.empty() && ReadText(text, read)) words.push_back(text);
  }
  return words;
}

std::vector<std::string_view> TargetWords() {
  std::vector<std::string_view> words = WordsOfEnumeration<MDTurretType>();
  words.push_back(kFixtureType);
  return words;
}

std::vector<std::string_view> FlagWords() { return {kTrue, "FALSE"}; }

// ---- the kinds of values

struct Kind {
  std::string_view name;       // of the schema's type
  std::string_view is;         // what a value is, for findings and readers; not for words
  std::string_view otherwise;  // what the reader makes of another value
  std::string_view body;       // of the schema's type; empty if it is a list of words
  bool (*fits)(std::string_view);
  std::vector<std::string_view> (*words)() = nullptr;
};

constexpr Kind kText = {
    "text", "any text",
    "The reader takes every text. One with a line end or another control character is not exported.",
    R"(<xs:restriction base="xs:string"/>)", [](std::string_view) { return true; }};
constexpr Kind kInteger = {
    "integer", "an integer",
    "It is read up to the first character that does not belong to it. Without a number it is 0, outside of "
    "-2147483648 to 2147483647 the nearest of them.",
    R"(<xs:restriction base="xs:int"><xs:pattern value="[+\-]?[0-9]+"/></xs:restriction>)",
    [](std::string_view text) { return IsIntegerFrom(text, {}); }};
constexpr Kind kReal = {
    "real", "a number from -100000 to 100000",
    "The first comma is read as a decimal point, unless the value begins with it. It is read up to the first character "
    "that does not belong to it. Without a number it is 0, out of range the nearest limit.",
    R"(<xs:restriction base="number"><xs:minInclusive value="-100000"/><xs:maxInclusive value="100000"/></xs:restriction>)",
    IsReal};
constexpr Kind kNumber = {
    "number", "a number", "",
    R"(<xs:restriction base="xs:double"><xs:pattern value="[+\-]?([0-9]+(\.[0-9]*)?|\.[0-9]+)([eE][+\-]?[0-9]+)?"/></xs:restriction>)",
    nullptr};
constexpr Kind kVector = {
    "vector", "three numbers with blanks between them",
    "They are read up to the first text that is not a number; the others are 0. A comma is not repaired, nothing is "
    "limited, and the precision is single.",
    R"(<xs:restriction><xs:simpleType><xs:list itemType="number"/></xs:simpleType><xs:length value="3"/></xs:restriction>)",
    IsVector};
constexpr Kind kByte = {
    "byte", "an integer from 0 to 255", "",
    R"(<xs:restriction base="integer"><xs:minInclusive value="0"/><xs:maxInclusive value="255"/></xs:restriction>)",
    nullptr};
constexpr Kind kColour = {
    "colour", "three integers from 0 to 255 with blanks between them",
    "They are read up to the first text that is not a number; the others are 0. Other integers are kept.",
    R"(<xs:restriction><xs:simpleType><xs:list itemType="byte"/></xs:simpleType><xs:length value="3"/></xs:restriction>)",
    IsColour};
constexpr Kind kIdList = {
    "idList", "integers with commas between them",
    "Each item is read as an integer. A NUM below the number of items ignores the rest; a NUM above it repeats the "
    "last "
    "one, unless the text ends with a comma. An empty list is ignored.",
    R"(<xs:restriction base="xs:string"><xs:pattern value=" *[+\-]?[0-9]{1,10} *(, *[+\-]?[0-9]{1,10} *)*"/></xs:restriction>)",
    IsIdList};
constexpr Kind kFlag = {"flag", "", "It is FALSE.", "", nullptr, FlagWords};
constexpr Kind kTarget = {"target", "", "There is no tool target.", "", nullptr, TargetWords};
constexpr Kind kDirection = {"direction", "",      "It is none; the vector of a fixture is then 0 0 0.",
                             "",          nullptr, WordsOfEnumeration<CMDirType>};
constexpr Kind kCarrier = {"carrier", "", "It is Fixed.", "", nullptr, WordsOfEnumeration<CMParentType>};
constexpr Kind kAxis = {"axis", "", "It is Z.", "", nullptr, WordsOfEnumeration<CM_AXIS_TYPE>};

constexpr const Kind* kKinds[] = {&kText, &kInteger, &kNumber,    &kReal,    &kVector, &kByte,  &kColour,
                                  &kFlag, &kTarget,  &kDirection, &kCarrier, &kAxis,   &kIdList};

struct KindOf {
  const Kind& operator()(Set<TextVersion>) const { return kText; }
  const Kind& operator()(Set<std::string_view>) const { return kText; }
  const Kind& operator()(Set<int>) const { return kInteger; }
  const Kind& operator()(Set<double>) const { return kReal; }
  const Kind& operator()(Set<Flag>) const { return kFlag; }
  const Kind& operator()(Set<const FRVector&>) const { return kVector; }
  const Kind& operator()(Set<Colour>) const { return kColour; }
  const Kind& operator()(Set<TargetType>) const { return kTarget; }
  const Kind& operator()(Set<CMDirType>) const { return kDirection; }
  const Kind& operator()(Set<CMParentType>) const { return kCarrier; }
  const Kind& operator()(Set<CM_AXIS_TYPE>) const { return kAxis; }
  const Kind& operator()(Set<IdList>) const { return kIdList; }
};

std::string_view NameOf(const Element& rule) { return rule.name.empty() ? kRootName : rule.name; }

// An attribute as the schema has it.
struct Form {
  Form(const Element& element, const Attribute& attribute)
      : row(attribute), kind(std::visit(KindOf(), attribute.set)), words(WordsOf(NameOf(element), attribute.name)) {}

  bool IsRequired() const { return words && words->required; }
  IntegerRange Range() const { return words ? words->range : IntegerRange(); }
  // A required text must not be empty.
  bool NeedsText() const { return IsRequired() && &kind == &kText; }

  bool Fits(std::string_view value) const {
    if (kind.words) return std::ranges::count(kind.words(), value) != 0;
    if (NeedsText() && value.empty()) return false;
    return &kind == &kInteger ? IsIntegerFrom(value, Range()) : kind.fits(value);
  }
  // What a value is.
  std::string Is() const {
    if (kind.words) return fmt::format("one of {}", fmt::join(kind.words(), ", "));
    if (NeedsText()) return "a text";
    if (&kind != &kInteger || Range().IsWhole()) return std::string(kind.is);
    const IntegerRange range = Range();
    return range.most == IntegerRange().most ? fmt::format("an integer from {}", range.least)
                                             : fmt::format("an integer from {} to {}", range.least, range.most);
  }

  const Attribute& row;
  const Kind& kind;
  const AttributeWords* words;
};

// ---- the schema

// Writes lines with their indent.
class SchemaWriter {
 public:
  void Line(std::string_view text) { fmt::format_to(std::back_inserter(out_), "{:{}}{}\n", "", indent_, text); }
  void Open(std::string_view text) {
    Line(text);
    indent_ += 2;
  }
  void Close(std::string_view text) {
    indent_ -= 2;
    Line(text);
  }
  void Say(std::string_view text) {
    Line(fmt::format("<xs:annotation><xs:documentation>{}</xs:documentation></xs:annotation>", text));
  }
  const std::string& Text() const { return out_; }

 private:
  std::string out_;
  int indent_ = 0;
};

void WriteKind(const Kind& kind, SchemaWriter& out) {
  out.Open(fmt::format(R"(<xs:simpleType name="{}">)", kind.name));
  std::string words = kind.is.empty() ? "One of these words." : fmt::format("It is {}.", kind.is);
  if (!kind.otherwise.empty()) words += fmt::format(" The reader's answer to another value: {}", kind.otherwise);
  out.Say(words);
  if (kind.words) {
    out.Open(R"(<xs:restriction base="xs:string">)");
    for (const std::string_view word : kind.words()) out.Line(fmt::format(R"(<xs:enumeration value="{}"/>)", word));
    out.Close("</xs:restriction>");
  } else {
    out.Line(kind.body);
  }
  out.Close("</xs:simpleType>");
}

std::string UnitWords(Unit unit) {
  switch (unit) {
    case Unit::kNone: break;
    case Unit::kLength: return " Unit: length.";
    case Unit::kAngle: return " Unit: angle.";
  }
  return {};
}

void WriteAttribute(const Form& form, SchemaWriter& out) {
  const IntegerRange range = form.Range();
  const bool narrow = form.NeedsText() || (&form.kind == &kInteger && !range.IsWhole());
  out.Open(fmt::format(R"(<xs:attribute name="{}"{}{}>)", form.row.name,
                       narrow ? "" : fmt::format(R"( type="{}")", form.kind.name),
                       form.IsRequired() ? R"( use="required")" : ""));
  if (form.words) {
    const std::string_view absent = form.words->absent.empty() ? "empty" : form.words->absent;
    out.Say(fmt::format("{}{} Without it: {}.", form.words->meaning, UnitWords(form.words->unit), absent));
  }
  if (narrow) {
    std::string facets;
    if (form.NeedsText()) facets = R"(<xs:minLength value="1"/>)";
    if (range.least != IntegerRange().least) facets += fmt::format(R"(<xs:minInclusive value="{}"/>)", range.least);
    if (range.most != IntegerRange().most) facets += fmt::format(R"(<xs:maxInclusive value="{}"/>)", range.most);
    out.Line(fmt::format(R"(<xs:simpleType><xs:restriction base="{}">{}</xs:restriction></xs:simpleType>)",
                         form.kind.name, facets));
  }
  out.Close("</xs:attribute>");
}

// The recursion is as deep as the grammar.
void WriteElement(const Element& rule, SchemaWriter& out) {
  out.Open(fmt::format(R"(<xs:element name="{}">)", NameOf(rule)));
  if (const ElementWords* words = WordsOf(NameOf(rule))) out.Say(words->meaning);
  out.Open("<xs:complexType>");
  if (!rule.children.empty()) {
    out.Open(R"(<xs:choice minOccurs="0" maxOccurs="unbounded">)");
    for (const Element& child : rule.children) WriteElement(child, out);
    out.Close("</xs:choice>");
  }
  for (const Attribute& row : rule.attributes) WriteAttribute(Form(rule, row), out);
  out.Close("</xs:complexType>");
  out.Close("</xs:element>");
}

// ---- the check

class SchemaChecker {
 public:
  SchemaChecker(const KVXMLDocument& document, MachineCheckResult& result) : document_(document), findings_(result) {}

  void Run(KVXMLNode& root) {
    for (const KVXMLFault& fault : document_.Faults()) findings_.Error(fault.place, fault.reason);
    for (KVXMLAttribute at = root.Element().FirstAttribute(); at; at = at.Next())
      definesXsi_ = definesXsi_ || (at.Name() == "xmlns:xsi" && at.Value() == kSchemaInstance);
    if (root.Element().Name() != kRootName) {
      Error(root, fmt::format("the root element is {} and not {}", Quoted(root.Element().Name()), kRootName));
    }
    Walk(RootElement(), root);
  }

 private:
  void Error(const KVXMLNode& node, std::string text) {
    findings_.Error(document_.PlaceOf(node.Element()), std::move(text));
  }

  void Walk(const Element& rule, KVXMLNode& node) {
    CheckAttributes(rule, node.Element());
    const KVXMLNodeList* children = node.GetChildNodes();
    for (long at = 0; children && at < children->GetSize(); ++at) {
      KVXMLNode* const child = (*children)[at];
      if (child->Element()) {
        WalkChild(rule, *child);
      } else if (child->GetNodeName() == _T("#text")) {
        Error(node, fmt::format("{} contains text; only elements are allowed", NameOf(rule)));
      }
    }
  }

  void WalkChild(const Element& rule, KVXMLNode& child) {
    const std::string_view name = child.Element().Name();
    const Element* const known = FindChild(rule, name);
    if (!known) return Error(child, fmt::format("element {} is not allowed in {}", Quoted(name), NameOf(rule)));
    if (known->name != name) Error(child, fmt::format("element {} is written {}", Quoted(name), known->name));
    Walk(*known, child);
  }

  // Attributes that the language of schemas allows in every element.
  bool IsOfSchema(std::string_view name) const {
    return name.starts_with("xmlns:") ||
           (definesXsi_ && (name == "xsi:noNamespaceSchemaLocation" || name == "xsi:schemaLocation"));
  }

  void CheckAttributes(const Element& rule, KVXMLElement element) {
    std::array<bool, kMostAttributesOfElement> found = {};
    for (KVXMLAttribute at = element.FirstAttribute(); at; at = at.Next()) {
      const Attribute* const row = FindAttribute(rule, at.Name());
      if (!row && !IsOfSchema(at.Name())) {
        findings_.Error(document_.PlaceOf(at),
                        fmt::format("attribute {} is not allowed in {}", Quoted(at.Name()), NameOf(rule)));
      }
      if (!row) continue;
      bool& again = found[std::size_t(row - rule.attributes.data())];
      if (again) findings_.Error(document_.PlaceOf(at), fmt::format("attribute {} occurs twice", at.Name()));
      again = true;
      if (const Form form(rule, *row); !form.Fits(at.Value())) {
        findings_.Error(document_.PlaceOfValue(at),
                        fmt::format("{}={} is not {}", at.Name(), Quoted(at.Value()), form.Is()));
      }
    }
    for (std::size_t at = 0; at < rule.attributes.size(); ++at) {
      if (!found[at] && Form(rule, rule.attributes[at]).IsRequired()) {
        findings_.Error(document_.PlaceOf(element),
                        fmt::format("{} needs the attribute {}", NameOf(rule), rule.attributes[at].name));
      }
    }
  }

  static constexpr std::string_view kSchemaInstance = "http://www.w3.org/2001/XMLSchema-instance";

  const KVXMLDocument& document_;
  Findings findings_;
  bool definesXsi_ = false;
};

template <class Load>
MachineCheckResult Check(Load load) {
  KVXMLDocument document;
  document.KeepFaults(true);
  document.KeepWhole(true);
  MachineCheckResult result;
  if (KVXMLNode* const root = load(document)) {
    SchemaChecker(document, result).Run(*root);
  } else {
    result.failure = document.LastFailure();
  }
  std::ranges::stable_sort(result.findings, {}, [](const MachineFinding& finding) {
    return std::pair(finding.place.line, finding.place.column);
  });
  return result;
}

}  // namespace

std::string MachineSchema() {
  SchemaWriter out;
  out.Line(R"(<?xml version="1.0" encoding="UTF-8"?>)");
  out.Line(
      "<!-- The schema of machine definitions, KestrovaAPT.xml. The command `kestrova machine schema` prints it. -->");
  out.Open(R"(<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema">)");
  WriteElement(RootElement(), out);
  for (const Kind* kind : kKinds) WriteKind(*kind, out);
  out.Close("</xs:schema>");
  return out.Text();
}

MachineCheckResult CheckMachineFileBySchema(const CString& definitionFile) {
  return Check([&](KVXMLDocument& document) { return document.LoadFromFile(definitionFile); });
}

MachineCheckResult CheckMachineTextBySchema(std::string_view definition) {
  return Check([&](KVXMLDocument& document) { return document.LoadFromMemory(definition); });
}
