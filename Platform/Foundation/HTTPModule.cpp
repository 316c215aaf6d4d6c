#include "Platform/Foundation/HTTPTransfer.hpp"

#include <gio/gio.h>
#include <glib-object.h>
#include <glib.h>
#include <libsoup/soup.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using platform::foundation::HTTPAnswer;
using platform::foundation::HTTPFunctions;

namespace
{

struct ObjectDeleter {
    void operator()(gpointer object) const { g_object_unref(object); }
};
template <typename T>
using Object = std::unique_ptr<T, ObjectDeleter>;

/// One transfer with a session of its own, since a session belongs to one thread.
struct Transfer {
    Transfer(const char *address, unsigned timeout)
        : session(soup_session_new_with_options("timeout", timeout, nullptr)),
          message(soup_message_new(SOUP_METHOD_GET, address))
    {
        if (message)
            soup_message_add_flags(message.get(), SOUP_MESSAGE_COLLECT_METRICS);
    }

    Object<SoupSession> session;
    /// Null for an address that cannot be asked.
    Object<SoupMessage> message;
    std::function<void(HTTPAnswer)> done;
};

HTTPAnswer failure(const char *reason)
{
    HTTPAnswer answer;
    answer.error = reason;
    return answer;
}

HTTPAnswer noAddress()
{
    return failure("The address is none of the web.");
}

/// libsoup takes the end of the connection for the end of the body, whatever length was
/// announced. What counts are the bytes on the way, before any decompression.
bool isCutShort(SoupMessage *message)
{
    SoupMessageHeaders *headers = soup_message_get_response_headers(message);
    if (soup_message_headers_get_encoding(headers) != SOUP_ENCODING_CONTENT_LENGTH)
        return false;
    SoupMessageMetrics *metrics = soup_message_get_metrics(message);
    const guint64 received =
        metrics ? soup_message_metrics_get_response_body_bytes_received(metrics) : 0;
    return received < static_cast<guint64>(soup_message_headers_get_content_length(headers));
}

/// Takes both arguments over; one of them is null.
HTTPAnswer answerOf(SoupMessage *message, GBytes *body, GError *fault)
{
    const std::unique_ptr<GBytes, decltype(&g_bytes_unref)> bytes(body, &g_bytes_unref);
    const std::unique_ptr<GError, decltype(&g_error_free)> error(fault, &g_error_free);
    if (error)
        return failure(error->message);
    if (isCutShort(message))
        return failure("The connection was closed before the end.");
    HTTPAnswer answer;
    answer.status = static_cast<int>(soup_message_get_status(message));
    const std::unique_ptr<gchar, decltype(&g_free)> address(
        g_uri_to_string(soup_message_get_uri(message)), &g_free);
    answer.address = address.get();
    const char *type =
        soup_message_headers_get_content_type(soup_message_get_response_headers(message), nullptr);
    answer.mimeType = type ? type : "";
    gsize size = 0;
    const auto *data = static_cast<const std::byte *>(g_bytes_get_data(bytes.get(), &size));
    answer.bytes.assign(data, data + size);
    return answer;
}

HTTPAnswer fetch(const char *address, unsigned timeout) noexcept
{
    // Nothing of the main thread's is served while it waits here.
    const std::unique_ptr<GMainContext, decltype(&g_main_context_unref)> context(
        g_main_context_new(), &g_main_context_unref);
    g_main_context_push_thread_default(context.get());
    HTTPAnswer answer;
    {
        const Transfer transfer(address, timeout);
        GError *error = nullptr;
        GBytes *body = transfer.message
                           ? soup_session_send_and_read(transfer.session.get(),
                                                        transfer.message.get(), nullptr, &error)
                           : nullptr;
        answer = transfer.message ? answerOf(transfer.message.get(), body, error) : noAddress();
    }
    g_main_context_pop_thread_default(context.get());
    return answer;
}

void finish(GObject * /*session*/, GAsyncResult *result, gpointer data)
{
    const std::unique_ptr<Transfer> transfer(static_cast<Transfer *>(data));
    GError *error = nullptr;
    GBytes *body = soup_session_send_and_read_finish(transfer->session.get(), result, &error);
    transfer->done(answerOf(transfer->message.get(), body, error));
}

void fetchLater(const char *address, unsigned timeout,
                std::function<void(HTTPAnswer)> done) noexcept
{
    auto transfer = std::make_unique<Transfer>(address, timeout);
    if (!transfer->message) {
        done(noAddress());
        return;
    }
    transfer->done = std::move(done);
    SoupSession *session = transfer->session.get();
    SoupMessage *message = transfer->message.get();
    soup_session_send_and_read_async(session, message, G_PRIORITY_DEFAULT, nullptr, finish,
                                     transfer.release());
}

} // namespace

/// The module's one entry; see `httpFunctions`.
extern "C" [[gnu::visibility("default")]] const HTTPFunctions parvaneHTTPFunctions;
const HTTPFunctions parvaneHTTPFunctions{fetch, fetchLater};
