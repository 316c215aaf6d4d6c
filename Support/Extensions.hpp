#pragma once

// The support utilities in one.
#include "Support/DiagnosticPrinting.hpp" // IWYU pragma: export
#include "Support/FourCharacterCode.hpp"  // IWYU pragma: export
