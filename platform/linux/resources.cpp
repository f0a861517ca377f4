#include "platform/resources.h"

#include "platform/linux/data_modules.h"

int LoadStringW(HINSTANCE, UINT, LPWSTR, int) { return 0; }

std::u16string DataModulePath(HINSTANCE) { return {}; }
