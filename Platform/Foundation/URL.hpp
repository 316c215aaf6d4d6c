#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

/// A location: the text of a URI (RFC 3986) and its parts. An immutable value.
class URL
{
public:
    /// The location of a file or folder. `path` is UTF-8 and may hold any
    /// character; the text form has what RFC 3986 reserves percent-encoded. A
    /// relative path is taken from the current folder. A folder that exists gets
    /// a trailing slash in its text form.
    static URL fileURLWithPath(std::string_view path);

    /// Reads text as it stands, encoding nothing. None for empty text and for
    /// text with blanks, control or non-ASCII characters or a malformed escape.
    static std::optional<URL> fromString(std::string_view text);

    /// The whole text.
    const std::string &absoluteString() const { return text_; }
    /// As it is written, without its colon; none in a relative reference.
    std::optional<std::string> scheme() const;
    /// The authority's host alone, without user and port; none where there is none.
    std::optional<std::string> host() const;
    /// The path with escapes decoded and without a trailing slash (but "/").
    std::string path() const;
    /// The last component's extension without its dot; empty where there is none.
    std::string pathExtension() const;
    /// The path's last component with escapes decoded; "/" for the root.
    std::string lastPathComponent() const;
    /// Whether the scheme is `file`.
    bool isFileURL() const;

    /// The location with one component more, percent-encoded where RFC 3986 asks for
    /// it.
    URL appendingPathComponent(std::string_view component) const;
    /// The folder that the location lies in, with a trailing slash.
    URL deletingLastPathComponent() const;

    /// The text that stands for the location in a printed line.
    const std::string &description() const { return text_; }

    /// Whether the texts are the same, byte by byte.
    friend bool operator==(const URL &, const URL &) = default;

private:
    explicit URL(std::string text) : text_(std::move(text)) {}
    std::string text_;
};
