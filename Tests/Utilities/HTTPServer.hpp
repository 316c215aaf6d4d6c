#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
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
        /// Whether it waits for `release` before all.
        bool isHeld = false;
    };

    explicit HTTPServer(std::map<std::string, Answer> answers);
    ~HTTPServer();
    HTTPServer(const HTTPServer &) = delete;
    HTTPServer &operator=(const HTTPServer &) = delete;

    /// The whole address of a path that begins with a slash.
    std::string address(const std::string &path) const;
    /// The paths that were asked for, in order.
    std::vector<std::string> requests() const;
    /// How many were answered.
    std::size_t answered() const { return answered_; }
    /// Lets answers go that are held, those of now and of later.
    void release();

private:
    void serve();
    void answer(int connection);
    void send(int connection, const std::string &path);

    std::map<std::string, Answer> answers_;
    int socket_;
    int port_;
    std::atomic<bool> ending_{false};
    std::atomic<std::size_t> answered_{0};
    mutable std::mutex mutex_;
    bool isReleased_ = false;
    std::condition_variable released_;
    std::vector<std::string> requests_;
    std::set<int> open_;
    std::vector<std::thread> connections_;
    std::thread acceptor_;
};

} // namespace test
