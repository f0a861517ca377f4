#include "platform/console.h"

#include <unistd.h>

int _isatty(int stream) { return isatty(stream); }
