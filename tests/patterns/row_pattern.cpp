#include "tests/patterns/row_pattern.h"

namespace kvtest {

IMPLEMENT_SERIAL(RowSkip, QFPattInstToSkip, VERSIONABLE_SCHEMA | 1)
IMPLEMENT_SERIAL(RowPattern, QFPatternInfo, VERSIONABLE_SCHEMA | 1)
IMPLEMENT_SERIAL(Patterned, QFObject, VERSIONABLE_SCHEMA | 1)

}  // namespace kvtest
