#include "share/kvshare.h"
