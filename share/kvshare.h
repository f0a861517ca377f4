// Everything public of the shared library, for a module that wants one include: #include <kvshare/kvshare.h>.
#pragma once

#include "framework/archive.h"
#include "framework/array.h"
#include "framework/exception.h"
#include "framework/file.h"
#include "framework/list.h"
#include "framework/ob_array.h"
#include "framework/ob_list.h"
#include "framework/object.h"
#include "framework/resources.h"
#include "framework/text.h"
