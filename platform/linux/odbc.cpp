// The driver manager takes the encoding of narrow text from the locale of the connecting thread.
#include "platform/odbc.h"

#include <locale.h>

Utf8Connections::Utf8Connections()
    : locale_(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)),
      before_(locale_ ? uselocale(static_cast<locale_t>(locale_)) : nullptr) {}

Utf8Connections::~Utf8Connections() {
  if (before_) uselocale(static_cast<locale_t>(before_));
  if (locale_) freelocale(static_cast<locale_t>(locale_));
}
