#pragma once

#include <string>

namespace test
{

/// A PDF document of one page with `text` on it, in large letters.
std::string pdfDocument(const std::string &text);

} // namespace test
