// kvshare-crash: the library starts it, see share/diagnostics/crash_events.h.
#include "share/diagnostics/crash_events.h"

int main(int argc, char** argv) { return RunCrashHelper(argc, argv); }
