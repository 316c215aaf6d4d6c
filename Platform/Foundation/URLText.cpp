#include "Platform/Foundation/URLText.hpp"

#include <algorithm>
#include <cstddef>

namespace platform::foundation
{

namespace
{

// The locale must not have a say, so <cctype> is no help.
constexpr bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

constexpr char lowered(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

constexpr bool isLetter(char c)
{
    return lowered(c) >= 'a' && lowered(c) <= 'z';
}

constexpr bool isUnreserved(char c)
{
    return isLetter(c) || isDigit(c) || std::string_view("-._~").find(c) != std::string_view::npos;
}

constexpr bool isSubDelimiter(char c)
{
    return std::string_view("!$&'()*+,;=").find(c) != std::string_view::npos;
}

constexpr int hexValue(char c)
{
    if (isDigit(c))
        return c - '0';
    const char letter = lowered(c);
    return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

bool isEscape(std::string_view text)
{
    return text.size() >= 3 && text[0] == '%' && hexValue(text[1]) >= 0 && hexValue(text[2]) >= 0;
}

/// Whether `text` consists of unreserved characters, sub-delimiters, whole
/// escapes and the characters in `others`.
bool consistsOf(std::string_view text, std::string_view others)
{
    while (!text.empty()) {
        const char c = text.front();
        if (isEscape(text))
            text.remove_prefix(3);
        else if (isUnreserved(c) || isSubDelimiter(c) || others.find(c) != std::string_view::npos)
            text.remove_prefix(1);
        else
            return false;
    }
    return true;
}

bool isScheme(std::string_view text)
{
    return !text.empty() && isLetter(text.front()) &&
           std::all_of(text.begin(), text.end(), [](char c) {
               return isLetter(c) || isDigit(c) || c == '+' || c == '-' || c == '.';
           });
}

/// An authority taken apart; `port` keeps its colon.
struct Authority {
    std::string_view user;
    std::string_view host;
    std::string_view port;
};

Authority splitAuthority(std::string_view text)
{
    Authority parts;
    if (const auto at = text.find('@'); at != std::string_view::npos) {
        parts.user = text.substr(0, at);
        text.remove_prefix(at + 1);
    }
    // The colons of an address in brackets are its own.
    const auto bracket = text.starts_with('[') ? text.find(']') : std::string_view::npos;
    const auto colon = text.find(':', bracket == std::string_view::npos ? 0 : bracket);
    parts.host = text.substr(0, colon);
    if (colon != std::string_view::npos)
        parts.port = text.substr(colon);
    return parts;
}

bool isHost(std::string_view host)
{
    if (!host.starts_with('['))
        return consistsOf(host, "");
    return host.size() > 2 && host.ends_with(']') &&
           consistsOf(host.substr(1, host.size() - 2), ":") &&
           host.find('%') == std::string_view::npos;
}

bool isAuthority(std::string_view text)
{
    const Authority parts = splitAuthority(text);
    const std::string_view digits = parts.port.empty() ? parts.port : parts.port.substr(1);
    return consistsOf(parts.user, ":") && isHost(parts.host) &&
           std::all_of(digits.begin(), digits.end(), isDigit);
}

void appendEscape(std::string &text, char c)
{
    constexpr std::string_view digits = "0123456789ABCDEF";
    const auto byte = static_cast<unsigned char>(c);
    text.append({'%', digits[byte >> 4U], digits[byte & 15U]});
}

/// Cuts `text` at the first of `marks` and answers what stands before it.
std::string_view takeUntil(std::string_view &text, std::string_view marks)
{
    const std::string_view taken = text.substr(0, text.find_first_of(marks));
    text.remove_prefix(taken.size());
    return taken;
}

} // namespace

URLParts splitURL(std::string_view text)
{
    URLParts parts;
    const auto mark = text.find_first_of(":/?#");
    if (mark != std::string_view::npos && mark > 0 && text[mark] == ':') {
        parts.scheme = text.substr(0, mark);
        text.remove_prefix(mark + 1);
    }
    if (text.starts_with("//")) {
        text.remove_prefix(2);
        parts.authority = takeUntil(text, "/?#");
    }
    parts.path = takeUntil(text, "?#");
    if (text.starts_with('?')) {
        text.remove_prefix(1);
        parts.query = takeUntil(text, "#");
    }
    if (text.starts_with('#'))
        parts.fragment = text.substr(1);
    return parts;
}

bool isURL(std::string_view text)
{
    if (text.empty() || text.front() == ':')
        return false;
    const URLParts parts = splitURL(text);
    return (!parts.scheme || isScheme(*parts.scheme)) &&
           (!parts.authority || isAuthority(*parts.authority)) && consistsOf(parts.path, ":@/") &&
           consistsOf(parts.query.value_or(""), ":@/?") &&
           consistsOf(parts.fragment.value_or(""), ":@/?");
}

std::string_view hostOfAuthority(std::string_view authority)
{
    std::string_view host = splitAuthority(authority).host;
    if (host.starts_with('[') && host.ends_with(']'))
        host = host.substr(1, host.size() - 2);
    return host;
}

std::string encodePath(std::string_view path)
{
    std::string text;
    text.reserve(path.size());
    for (const char c : path) {
        if (c == '/' || isUnreserved(c))
            text.push_back(c);
        else
            appendEscape(text, c);
    }
    return text;
}

std::string encodeForbidden(std::string_view text)
{
    const URLParts parts = splitURL(text);
    const std::string_view authority = parts.authority.value_or("");
    const char *fragment = parts.fragment ? parts.fragment->data() : text.data() + text.size();
    std::string result;
    for (std::size_t index = 0; index < text.size(); ++index) {
        const char c = text[index];
        const char *place = text.data() + index;
        const bool inAuthority =
            place >= authority.data() && place < authority.data() + authority.size();
        if (isEscape(text.substr(index)) || consistsOf({place, 1}, ":/?@") ||
            (inAuthority && (c == '[' || c == ']')) || (c == '#' && place < fragment))
            result.push_back(c);
        else
            appendEscape(result, c);
    }
    return result;
}

std::string decodePercent(std::string_view text)
{
    std::string bytes;
    bytes.reserve(text.size());
    while (!text.empty()) {
        const bool escape = isEscape(text);
        bytes.push_back(escape ? static_cast<char>(hexValue(text[1]) * 16 + hexValue(text[2]))
                               : text.front());
        text.remove_prefix(escape ? 3 : 1);
    }
    return bytes;
}

bool equalsIgnoringCase(std::string_view left, std::string_view right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return lowered(a) == lowered(b); });
}

} // namespace platform::foundation
