#include "Tests/Soak/Table.hpp"

#include <unistd.h>

namespace soak
{

void Table::row(const std::string &what, const std::string &found, const std::string &verdict)
{
    rows_ += "| " + what + " | " + found + " | " + verdict + " |\n";
}

void Table::write(int descriptor) const
{
    const std::string text = "| | found | |\n|---|---|---|\n" + rows_;
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t more = ::write(descriptor, text.data() + written, text.size() - written);
        if (more <= 0)
            return;
        written += static_cast<std::size_t>(more);
    }
}

} // namespace soak
