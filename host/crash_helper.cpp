// kvshare-crash: the library starts it, see share/diagnostics/crash_program.h.
#include "share/diagnostics/crash_program.h"

int main(int argc, char** argv) { return RunCrashHelper(argc, argv); }
