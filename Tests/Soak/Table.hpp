#pragma once

#include <sstream>
#include <string>

namespace soak
{

/// Rows of what was found, and of what ought to have been.
class Table
{
public:
    template <typename T>
    void say(const std::string &what, const T &found)
    {
        row(what, text(found), "");
    }

    template <typename T>
    void require(const std::string &what, const T &found, const T &wanted)
    {
        const bool isRight = found == wanted;
        isAsRequired_ = isAsRequired_ && isRight;
        row(what, text(found), isRight ? "as required" : "REQUIRED: " + text(wanted));
    }

    bool isAsRequired() const { return isAsRequired_; }
    void write(int descriptor) const;

private:
    template <typename T>
    static std::string text(const T &value)
    {
        std::ostringstream stream;
        stream << std::boolalpha << value;
        return stream.str();
    }
    void row(const std::string &what, const std::string &found, const std::string &verdict);

    bool isAsRequired_ = true;
    std::string rows_;
};

} // namespace soak
