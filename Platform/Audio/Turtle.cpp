#include "Platform/Audio/Turtle.hpp"

#include <serd/serd.h>

#include <algorithm>
#include <cstdint>
#include <memory>

namespace platform::audio
{

namespace
{

const std::uint8_t *bytesOf(const char *text)
{
    return reinterpret_cast<const std::uint8_t *>(text);
}

std::string_view textOf(const SerdNode &node)
{
    return {reinterpret_cast<const char *>(node.buf), node.n_bytes};
}

// serd descends into brackets by recursion.
bool isNestedTooDeeply(const std::string &text)
{
    constexpr int deepest = 500;
    int depth = 0;
    for (const char character : text) {
        if (character == '[' || character == '(')
            ++depth;
        else if (character == ']' || character == ')')
            depth = std::max(0, depth - 1);
        if (depth > deepest)
            return true;
    }
    return false;
}

class Reader
{
public:
    Reader(const std::string &folder, const std::function<void(const TurtleStatement &)> &visit)
        : visit_(visit)
    {
        SerdNode base =
            serd_node_new_file_uri(bytesOf((folder + "/").c_str()), nullptr, nullptr, true);
        environment_.reset(serd_env_new(&base));
        serd_node_free(&base);
    }

    bool read(const std::string &text)
    {
        const std::unique_ptr<SerdReader, decltype(&serd_reader_free)> reader(
            serd_reader_new(SERD_TURTLE, this, nullptr, &Reader::onBase, &Reader::onPrefix,
                            &Reader::onStatement, nullptr),
            &serd_reader_free);
        serd_reader_set_error_sink(
            reader.get(), [](void *, const SerdError *) { return SERD_SUCCESS; }, nullptr);
        return serd_reader_read_string(reader.get(), bytesOf(text.c_str())) == SERD_SUCCESS;
    }

private:
    static SerdStatus onBase(void *self, const SerdNode *uri)
    {
        return serd_env_set_base_uri(static_cast<Reader *>(self)->environment_.get(), uri);
    }

    static SerdStatus onPrefix(void *self, const SerdNode *name, const SerdNode *uri)
    {
        return serd_env_set_prefix(static_cast<Reader *>(self)->environment_.get(), name, uri);
    }

    static SerdStatus onStatement(void *self, SerdStatementFlags, const SerdNode *,
                                  const SerdNode *subject, const SerdNode *predicate,
                                  const SerdNode *object, const SerdNode *, const SerdNode *)
    {
        auto &reader = *static_cast<Reader *>(self);
        if (!reader.expand(*subject, reader.subject_) ||
            !reader.expand(*predicate, reader.predicate_) ||
            !reader.expand(*object, reader.object_))
            return SERD_ERR_BAD_CURIE;
        reader.visit_(
            {reader.subject_, reader.predicate_, reader.object_, object->type == SERD_LITERAL});
        return SERD_SUCCESS;
    }

    bool expand(const SerdNode &node, std::string &result)
    {
        if (node.type == SERD_CURIE) {
            SerdChunk prefix{};
            SerdChunk suffix{};
            if (serd_env_expand(environment_.get(), &node, &prefix, &suffix) != SERD_SUCCESS)
                return false;
            result.assign(reinterpret_cast<const char *>(prefix.buf), prefix.len);
            result.append(reinterpret_cast<const char *>(suffix.buf), suffix.len);
        } else if (node.type == SERD_URI && !serd_uri_string_has_scheme(node.buf)) {
            SerdNode full = serd_env_expand_node(environment_.get(), &node);
            result = textOf(full);
            serd_node_free(&full);
        } else {
            result = textOf(node);
        }
        return true;
    }

    const std::function<void(const TurtleStatement &)> &visit_;
    std::unique_ptr<SerdEnv, decltype(&serd_env_free)> environment_{nullptr, &serd_env_free};
    std::string subject_;
    std::string predicate_;
    std::string object_;
};

} // namespace

bool readTurtle(const std::string &text, const std::string &folder,
                const std::function<void(const TurtleStatement &)> &visit)
{
    return !isNestedTooDeeply(text) && Reader(folder, visit).read(text);
}

std::optional<std::string> pathOfFileLocation(std::string_view location)
{
    std::string text(location);
    // Serd steps over a cut escape as over a whole one, past the text's end.
    text.append(2, '\0');
    const std::unique_ptr<std::uint8_t, decltype(&serd_free)> path(
        serd_file_uri_parse(bytesOf(text.c_str()), nullptr), &serd_free);
    if (!path)
        return std::nullopt;
    return std::string(reinterpret_cast<const char *>(path.get()));
}

} // namespace platform::audio
