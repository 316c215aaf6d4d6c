#pragma once

// The support utilities in one.
#include "Support/Capitals.hpp"           // IWYU pragma: export
#include "Support/DiagnosticPrinting.hpp" // IWYU pragma: export
#include "Support/FileLocations.hpp"      // IWYU pragma: export
#include "Support/FourCharacterCode.hpp"  // IWYU pragma: export
#include "Support/ViewHelpers.hpp"        // IWYU pragma: export
