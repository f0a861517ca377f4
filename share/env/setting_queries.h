// Single values of the main module's settings trees, for code that needs one value and no tree. Each call looks the
// value up again; call on the thread that owns the trees.
#pragma once

#include "platform/types.h"

// "OpenOperationDialogToLastPage" and "CollapseOperationOnPreview" of the application's "Display" settings; 0 without
// the tree or the value.
KVSHARE_API int GetLastopernDlgtab();
KVSHARE_API int GetCollapseOnPreview();

// "MaxFacetDeviation" of the active document's "Simulation" settings. -1.0 means: use the default. It is the result
// without the tree or the value, and for each value that is above 0.0001 (within RESABS / 1000).
KVSHARE_API double GetSimulationSettingsFacetDeviation();
