// Where the folders above leave their tables. Constants before any initialiser runs, so that the order of initialisers
// doesn't matter.
#include "share/objects/object_services.h"

namespace {

constinit const ObjectPatternService* g_patterns = nullptr;
constinit RunCommandService g_runCommand = nullptr;

}  // namespace

void SetObjectPatternService(const ObjectPatternService* service) { g_patterns = service; }
void SetRunCommandService(RunCommandService service) { g_runCommand = service; }
const ObjectPatternService* GetObjectPatternService() { return g_patterns; }
RunCommandService GetRunCommandService() { return g_runCommand; }
