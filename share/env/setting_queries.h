// Single values of the main module's settings trees. Each call searches for the value again. Call them on the thread
// that owns the trees.
#pragma once

#include "platform/types.h"

// "OpenOperationDialogToLastPage" and "CollapseOperationOnPreview" of the group "Display" of the application settings.
// 0 if there is no tree or no such value.
KVSHARE_API int GetLastopernDlgtab();
KVSHARE_API int GetCollapseOnPreview();

// "MaxFacetDeviation", in metres, of the group "Simulation" of the active document's settings. -1.0 means the default:
// it is the result without a tree or value, and for values above 0.0001 (within RESABS / 1000).
KVSHARE_API double GetSimulationSettingsFacetDeviation();
