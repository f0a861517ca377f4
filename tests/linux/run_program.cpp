#include "tests/run_program.h"

#include <cstdlib>

namespace {

std::string Quoted(const std::string& text) {
  std::string result = "\"";
  for (const char c : text) {
    if (c == '\\' || c == '"' || c == '$' || c == '`') result += '\\';
    result += c;
  }
  return result + '"';
}

}  // namespace

int kvtest::RunProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                       const std::filesystem::path& in, const std::filesystem::path& out,
                       const std::filesystem::path& err) {
  std::string line = Quoted(program.string());
  for (const std::string& argument : arguments) line += ' ' + Quoted(argument);
  line += " <" + Quoted(in.string()) + " >" + Quoted(out.string()) + " 2>" + Quoted(err.string());
  const int status = std::system(line.c_str());
  // The exit code above eight bits of the signal.
  return status >= 256 ? status >> 8 : status == 0 ? 0 : 128 + (status & 127);
}
