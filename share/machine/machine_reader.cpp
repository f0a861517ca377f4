#include "share/machine/machine_reader.h"

#include <cstdint>
#include <cstring>

#include "share/machine/internal/machine_grammar.h"
#include "share/machine/internal/machine_numbers.h"
#include "share/machine/machine.h"

namespace {

using namespace kvmachine;

// Reads the text of an attribute by its kind and sets the value.
struct Apply {
  Reading& r;
  std::string_view text;

  void operator()(Set<TextVersion> set) const { set(r, {}); }
  void operator()(Set<std::string_view> set) const { set(r, text); }
  void operator()(Set<int> set) const { set(r, ReadInteger(text)); }
  void operator()(Set<double> set) const { set(r, ReadReal(text)); }
  void operator()(Set<Flag> set) const { set(r, {text == kTrue}); }
  void operator()(Set<IdList> set) const { set(r, {text}); }
  // Vectors of a definition have single precision.
  void operator()(Set<const FRVector&> set) const {
    float v[3];
    ScanReals(text, v);
    set(r, FRVector(v[0], v[1], v[2]));
  }
  void operator()(Set<Colour> set) const {
    int v[3];
    ScanIntegers(text, v);
    set(r, {v[0], v[1], v[2]});
  }
  void operator()(Set<TargetType> set) const {
    TargetType type = {text == kFixtureType, MD_TURRET_NONE};
    ReadText(text, type.target);
    set(r, type);
  }
  template <class Enumeration>
  void operator()(Set<Enumeration> set) const {
    Enumeration value;
    ReadText(text, value);
    set(r, value);
  }
};

// Compares the first and the last bytes of two texts that have one to two words.
template <class Word>
bool HasSameEnds(std::string_view a, std::string_view b) {
  const auto word = [](const char* at) {
    Word bytes;
    std::memcpy(&bytes, at, sizeof bytes);
    return bytes;
  };
  const std::size_t last = a.size() - sizeof(Word);
  return word(a.data()) == word(b.data()) && word(a.data() + last) == word(b.data() + last);
}

// Faster than memcmp for short names.
bool SameName(std::string_view name, std::string_view wanted) {
  if (name.size() != wanted.size()) return false;
  if (name.size() > 2 * sizeof(std::uint64_t)) return name == wanted;
  if (name.size() >= sizeof(std::uint64_t)) return HasSameEnds<std::uint64_t>(name, wanted);
  if (name.size() >= sizeof(std::uint32_t)) return HasSameEnds<std::uint32_t>(name, wanted);
  if (name.size() >= sizeof(std::uint16_t)) return HasSameEnds<std::uint16_t>(name, wanted);
  return name.empty() || name[0] == wanted[0];
}

void ApplyRow(const Attribute& row, std::string_view text, Reading& r) { std::visit(Apply{r, text}, row.set); }

// Calls take(row, value) for each known attribute in file order; if a name occurs twice, only for the first one.
// Definitions usually have the order of the table, so the search begins at the row after the previous one.
template <class Take>
void ForEachAttribute(std::span<const Attribute> rows, KVXMLElement element, Take take) {
  std::uint32_t found = 0;  // one bit for each row
  std::size_t next = 0;
  std::string_view name, value;
  for (KVXMLAttributeReader attributes(element); attributes.Next(name, value);) {
    for (std::size_t tried = 0; tried < rows.size(); ++tried) {
      if (next == rows.size()) next = 0;
      const std::size_t row = next++;
      if (!SameName(name, rows[row].name)) continue;
      if (!(found >> row & 1)) take(row, value);
      found |= 1u << row;
      break;
    }
  }
}

void ReadInTableOrder(std::span<const Attribute> rows, KVXMLElement element, Reading& r) {
  std::string_view values[kMostAttributesOfElement];  // by row
  ForEachAttribute(rows, element, [&](std::size_t row, std::string_view value) { values[row] = value; });
  for (std::size_t row = 0; row < rows.size(); ++row) {
    if (values[row].data()) ApplyRow(rows[row], values[row], r);
  }
}

void ReadAttributes(const Element& rule, KVXMLElement element, Reading& r) {
  if (rule.tableOrder) return ReadInTableOrder(rule.attributes, element, r);
  ForEachAttribute(rule.attributes, element,
                   [&](std::size_t row, std::string_view value) { ApplyRow(rule.attributes[row], value, r); });
}

// The recursion is as deep as the grammar, not as the file.
void ReadElement(const Element& rule, KVXMLElement element, Reading& r) {
  if (rule.begin && !rule.begin(r)) return;
  if (!rule.attributes.empty()) ReadAttributes(rule, element, r);
  if (!rule.children.empty()) {
    const Element* expected = rule.children.data();  // usually the rule of the next child
    KVXMLElement child;
    std::string_view name;
    for (KVXMLElementReader children(element); children.Next(child, name);) {
      const Element* known = SameName(name, expected->name) ? expected : FindChild(rule, name);
      if (!known) continue;
      ReadElement(*known, child, r);
      expected = rule.children.size() == 1 || known == &rule.children.back() ? rule.children.data() : known + 1;
    }
  }
  if (rule.end) rule.end(r);
}

}  // namespace

KVVMMachineXMLReaderUtil::~KVVMMachineXMLReaderUtil() = default;

int KVVMMachineXMLReaderUtil::LoadFromFile(CString fileName, KVVMMachine* machine) {
  m_pMachine = machine;
  return machine ? Load(m_document.LoadFromFile(fileName)) : 0;
}

int KVVMMachineXMLReaderUtil::LoadFromMemory(std::string_view definition, KVVMMachine* machine) {
  m_pMachine = machine;
  return machine ? Load(m_document.LoadFromMemory(definition)) : 0;
}

int KVVMMachineXMLReaderUtil::Load(KVXMLNode* root) {
  if (!root) return 0;
  m_strFolder = m_pMachine->GetPersistentPath();
  Reading reading(*m_pMachine, m_strFolder);
  ReadElement(RootElement(), root->Element(), reading);
  return 1;
}
