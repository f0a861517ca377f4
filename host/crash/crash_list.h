// kestrova crash list and clean: the files that crashes have left in a folder.
#pragma once

namespace CLI {
class App;
}

namespace kestrova {

void AddCrashList(CLI::App& group);
void AddCrashClean(CLI::App& group);

}  // namespace kestrova
