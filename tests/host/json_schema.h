// Checks the JSON output of commands by the schemas of docs/schemas/.
#pragma once

#include <string>

namespace kvtest {

// The path of a schema. The name is that of the command: "document-show", or "env" without a subcommand.
std::string SchemaFile(const std::string& name);

// The first fault of the JSON text by the schema, with its place; empty if it has none. A key that is not in camelCase
// is a fault too.
std::string SchemaFault(const std::string& name, const std::string& json);

}  // namespace kvtest
