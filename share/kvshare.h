// Everything public of the shared library, for a module that wants one include: #include <kvshare/kvshare.h>.
#pragma once

#include "framework/resources.h"
#include "framework/text.h"
