#include "share/machine/machine_reader.h"

#include <bit>
#include <cstdint>

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

// Faster than memcmp for short names.
bool SameName(std::string_view name, std::string_view wanted) {
  if (name.size() != wanted.size()) return false;
  for (std::size_t i = 0; i < name.size(); ++i) {
    if (name[i] != wanted[i]) return false;
  }
  return true;
}

// The text of a value, without a constructor, so that an array of them costs no initialisation.
struct RawValue {
  const char* text;
  std::size_t size;
};

// Finds the row of each attribute, then applies the found rows in table order. Definitions usually have that order, so
// the search begins at the row after the previous one. If a name occurs twice, the first value is used.
void ReadAttributes(std::span<const Attribute> rows, KVXMLElement element, Reading& r) {
  RawValue values[kMostAttributesOfElement];  // by row; set only for found rows
  std::uint32_t found = 0;                    // one bit for each row
  std::size_t next = 0;
  std::string_view name, value;
  for (KVXMLAttributeReader attributes(element); attributes.Next(name, value);) {
    for (std::size_t tried = 0; tried < rows.size(); ++tried) {
      if (next == rows.size()) next = 0;
      const std::size_t row = next++;
      if (!SameName(name, rows[row].name)) continue;
      if (!(found >> row & 1)) values[row] = {value.data(), value.size()};
      found |= 1u << row;
      break;
    }
  }
  for (; found; found &= found - 1) {
    const auto row = std::size_t(std::countr_zero(found));
    std::visit(Apply{r, {values[row].text, values[row].size}}, rows[row].set);
  }
}

// The recursion is as deep as the grammar, not as the file.
void ReadElement(const Element& rule, KVXMLElement element, Reading& r) {
  if (rule.begin && !rule.begin(r)) return;
  if (!rule.attributes.empty()) ReadAttributes(rule.attributes, element, r);
  if (!rule.children.empty()) {
    const Element* expected = rule.children.data();  // usually the rule of the next child
    for (KVXMLElement child = element.FirstChild(); child; child = child.NextSibling()) {
      const std::string_view name = child.Name();
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
