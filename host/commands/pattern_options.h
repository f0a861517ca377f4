// PatternOptions, the options of a command line that describe a pattern.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/document/document_units.h"
#include "host/document/pattern_kinds.h"

namespace CLI {
class App;
}

namespace kestrova {

class PatternOptions {
 public:
  // This object must exist until the command line is parsed.
  void AddTo(CLI::App& command);
  // Throws WrongUsage for a missing or wrong option, and for one that the kind does not have.
  std::unique_ptr<HostPattern> Build(const LengthUnit& unit) const;

 private:
  // The values of one option.
  struct Option {
    const char* name = nullptr;
    std::vector<std::string> values;
  };

  std::unique_ptr<HostPattern> BuildLinear(const LengthUnit& unit) const;
  std::unique_ptr<HostPattern> BuildCircular(const LengthUnit& unit) const;
  std::unique_ptr<HostPattern> BuildPolyline(const LengthUnit& unit) const;
  HostLinearPattern::Row RowOf(const Option& direction, const Option& spacing, const Option& count,
                               const LengthUnit& unit) const;
  const std::string& Required(const Option& option) const;
  DWORD CountOf(const Option& option) const;

  std::string m_kind;
  Option m_direction{"--direction", {}}, m_spacing{"--spacing", {}}, m_count{"--count", {}};
  Option m_direction2{"--direction2", {}}, m_spacing2{"--spacing2", {}}, m_count2{"--count2", {}};
  Option m_centre{"--centre", {}}, m_axis{"--axis", {}}, m_angle{"--angle", {}}, m_points{"--points", {}};
  bool m_total = false;
};

}  // namespace kestrova
