// Ends the compilation of a module that does not use C++20 with one line. The installation adds it to each header.
#pragma once

#if !defined(_MSVC_LANG) && __cplusplus < 202002L
#include <KVSHAREu needs C++20: compile with -std=c++20>
#endif
