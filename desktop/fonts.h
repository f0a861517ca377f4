// Fonts of the system for the platform's descriptions.
#pragma once

#include <QFont>
#include <optional>

#include "platform/drawing.h"

// The nearest font; null stands for the default font. None if Qt has no fonts in this process.
std::optional<QFont> FontFor(const LOGFONTW* description);
