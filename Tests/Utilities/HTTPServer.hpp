#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace test
{

/// A server of the web on 127.0.0.1 at a port of its own, which answers what it was
/// told, by path, on threads of its own, and 404 to all else. Each connection gets
/// one answer.
class HTTPServer
{
public:
    struct Answer {
        int status = 200;
        std::string type = "text/html";
        std::string body = {};
        /// Whole lines without their ends.
        std::vector<std::string> headers = {};
        /// Waited before the body.
        std::chrono::milliseconds delay{0};
        /// After so many bytes of the body the connection is closed.
        std::optional<std::size_t> closesAfter = {};
    };

    explicit HTTPServer(std::map<std::string, Answer> answers);
    ~HTTPServer();
    HTTPServer(const HTTPServer &) = delete;
    HTTPServer &operator=(const HTTPServer &) = delete;

    /// The whole address of a path that begins with a slash.
    std::string address(const std::string &path) const;
    /// The paths that were asked for, in order.
    std::vector<std::string> requests() const;

private:
    void serve();
    void answer(int connection);
    void send(int connection, const std::string &path);

    std::map<std::string, Answer> answers_;
    int socket_;
    int port_;
    std::atomic<bool> ending_{false};
    mutable std::mutex mutex_;
    std::vector<std::string> requests_;
    std::set<int> open_;
    std::vector<std::thread> connections_;
    std::thread acceptor_;
};

} // namespace test
