#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace platform::effect
{

/// What came over a socket is not what was agreed; `what()` says how.
class ProtocolBreach : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// How a record crosses: `of(record)` answers a tuple of references to its fields.
template <typename Record>
struct Fields;

template <typename T>
concept Scalar = std::is_arithmetic_v<T> || std::is_enum_v<T>;

/// Lays values one behind the other as bytes. Both ends run on one machine and are
/// built together, so scalars go as they are.
class MessageWriter
{
public:
    /// The bytes of all values in their order.
    template <typename... Values>
    static std::vector<std::byte> message(const Values &...values)
    {
        MessageWriter writer;
        (writer.put(values), ...);
        return std::move(writer.bytes_);
    }

private:
    template <Scalar T>
    void put(const T &value)
    {
        append(&value, sizeof value);
    }
    void put(const std::string &text)
    {
        put(std::uint64_t{text.size()});
        append(text.data(), text.size());
    }
    template <typename T>
    void put(const std::vector<T> &values)
    {
        put(std::uint64_t{values.size()});
        if constexpr (Scalar<T> && sizeof(T) == 1)
            append(values.data(), values.size());
        else
            for (const T &value : values)
                put(value);
    }
    template <typename T>
    void put(const std::optional<T> &value)
    {
        put(static_cast<std::uint8_t>(value.has_value()));
        if (value)
            put(*value);
    }
    template <typename Key, typename T>
    void put(const std::map<Key, T> &values)
    {
        put(std::uint64_t{values.size()});
        for (const auto &[key, value] : values) {
            put(key);
            put(value);
        }
    }
    template <typename Record>
    requires requires(const Record &record) { Fields<Record>::of(record); }
    void put(const Record &record)
    {
        std::apply([this](const auto &...fields) { (this->put(fields), ...); },
                   Fields<Record>::of(record));
    }

    void append(const void *bytes, std::size_t size)
    {
        const auto *begin = static_cast<const std::byte *>(bytes);
        bytes_.insert(bytes_.end(), begin, begin + size);
    }

    std::vector<std::byte> bytes_;
};

/// Takes apart what a `MessageWriter` made, believing none of the sizes in it.
class MessageReader
{
public:
    /// The values that make up `message`, to its last byte. Throws a
    /// `ProtocolBreach` when they do not.
    template <typename T>
    static T read(std::span<const std::byte> message)
    {
        MessageReader reader(message);
        T value{};
        reader.get(value);
        if (!reader.rest_.empty())
            throw ProtocolBreach("a message is longer than what it says");
        return value;
    }

private:
    explicit MessageReader(std::span<const std::byte> message) : rest_(message) {}

    template <Scalar T>
    void get(T &value)
    {
        const auto bytes = take(sizeof value);
        if constexpr (std::is_same_v<T, bool>)
            value = bytes[0] != std::byte{0};
        else
            std::memcpy(&value, bytes.data(), sizeof value);
    }
    void get(std::string &text)
    {
        const auto bytes = take(count());
        text.assign(reinterpret_cast<const char *>(bytes.data()), bytes.size());
    }
    template <typename T>
    void get(std::vector<T> &values)
    {
        const std::size_t size = count();
        if constexpr (Scalar<T> && sizeof(T) == 1) {
            const auto *begin = reinterpret_cast<const T *>(take(size).data());
            values.assign(begin, begin + size);
        } else {
            // Grown value by value: the bytes run out before memory does.
            for (std::size_t i = 0; i < size; ++i)
                get(values.emplace_back());
        }
    }
    template <typename T>
    void get(std::optional<T> &value)
    {
        bool isThere = false;
        get(isThere);
        if (isThere)
            get(value.emplace());
    }
    template <typename Key, typename T>
    void get(std::map<Key, T> &values)
    {
        const std::size_t size = count();
        for (std::size_t i = 0; i < size; ++i) {
            Key key{};
            get(key);
            get(values[std::move(key)]);
        }
    }
    template <typename Record>
    requires requires(Record &record) { Fields<Record>::of(record); }
    void get(Record &record)
    {
        std::apply([this](auto &...fields) { (this->get(fields), ...); },
                   Fields<Record>::of(record));
    }

    std::size_t count()
    {
        std::uint64_t number = 0;
        get(number);
        // Whatever is counted takes a byte at least.
        if (number > rest_.size())
            throw ProtocolBreach("a message is shorter than what it says");
        return number;
    }

    std::span<const std::byte> take(std::size_t size)
    {
        if (size > rest_.size())
            throw ProtocolBreach("a message is shorter than what it says");
        const auto taken = rest_.first(size);
        rest_ = rest_.subspan(size);
        return taken;
    }

    std::span<const std::byte> rest_;
};

} // namespace platform::effect
