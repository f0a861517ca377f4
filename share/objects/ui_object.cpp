// The companion's defaults, which do nothing.
#include "share/objects/ui_object.h"

IMPLEMENT_DYNAMIC(ui_QFObject, CObject)

void ui_QFObject::Serialize(CArchive&) {}

void ui_QFObject::BaseName(CString&) const {}

void ui_QFObject::ResetFlagForStockChange() {}
