#include "platform/resources.h"

int LoadStringW(HINSTANCE, UINT, LPWSTR, int) { return 0; }
