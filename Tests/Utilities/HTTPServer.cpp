#include "Tests/Utilities/HTTPServer.hpp"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <utility>

namespace test
{
namespace
{

int openSocket()
{
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (descriptor < 0 ||
        bind(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 ||
        listen(descriptor, 16) != 0)
        throw std::runtime_error("There is no port to serve on.");
    return descriptor;
}

int portOf(int descriptor)
{
    sockaddr_in address{};
    socklen_t length = sizeof address;
    getsockname(descriptor, reinterpret_cast<sockaddr *>(&address), &length);
    return ntohs(address.sin_port);
}

/// The path of the request; empty when there is none.
std::string readRequest(int connection)
{
    std::string text;
    std::array<char, 4096> part{};
    while (text.find("\r\n\r\n") == std::string::npos) {
        const ssize_t count = recv(connection, part.data(), part.size(), 0);
        if (count <= 0)
            return {};
        text.append(part.data(), static_cast<std::size_t>(count));
    }
    const auto start = text.find(' ') + 1;
    return text.substr(start, text.find(' ', start) - start);
}

void write(int connection, const std::string &text)
{
    std::size_t sent = 0;
    while (sent < text.size()) {
        const ssize_t count =
            ::send(connection, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
        if (count <= 0)
            return;
        sent += static_cast<std::size_t>(count);
    }
}

} // namespace

HTTPServer::HTTPServer(std::map<std::string, Answer> answers)
    : answers_(std::move(answers)), socket_(openSocket()), port_(portOf(socket_)),
      acceptor_([this] { serve(); })
{
}

HTTPServer::~HTTPServer()
{
    ending_ = true;
    shutdown(socket_, SHUT_RDWR);
    acceptor_.join();
    release();
    {
        // A browser may keep a connection open and ask nothing.
        const std::lock_guard lock(mutex_);
        for (const int connection : open_)
            shutdown(connection, SHUT_RDWR);
    }
    for (std::thread &connection : connections_)
        connection.join();
    close(socket_);
}

std::string HTTPServer::address(const std::string &path) const
{
    return "http://127.0.0.1:" + std::to_string(port_) + path;
}

std::vector<std::string> HTTPServer::requests() const
{
    const std::lock_guard lock(mutex_);
    return requests_;
}

void HTTPServer::release()
{
    {
        const std::lock_guard lock(mutex_);
        isReleased_ = true;
    }
    released_.notify_all();
}

void HTTPServer::serve()
{
    while (!ending_) {
        const int connection = accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection < 0)
            continue;
        const std::lock_guard lock(mutex_);
        open_.insert(connection);
        connections_.emplace_back([this, connection] { answer(connection); });
    }
}

void HTTPServer::answer(int connection)
{
    const std::string path = readRequest(connection);
    if (!path.empty())
        send(connection, path);
    const std::lock_guard lock(mutex_);
    open_.erase(connection);
    close(connection);
}

void HTTPServer::send(int connection, const std::string &path)
{
    const auto known = answers_.find(path);
    const Answer answer =
        known == answers_.end() ? Answer{.status = 404, .body = "Not here."} : known->second;
    {
        std::unique_lock lock(mutex_);
        requests_.push_back(path);
        if (answer.isHeld)
            released_.wait(lock, [this] { return isReleased_; });
    }
    std::string head = "HTTP/1.1 " + std::to_string(answer.status) +
                       " Answer\r\nConnection: close\r\nContent-Type: " + answer.type +
                       "\r\nContent-Length: " + std::to_string(answer.body.size()) + "\r\n";
    for (const std::string &header : answer.headers)
        head += header + "\r\n";
    write(connection, head + "\r\n");
    for (auto waited = answer.delay; waited.count() > 0 && !ending_;
         waited -= std::chrono::milliseconds(10))
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    write(connection, answer.body.substr(0, answer.closesAfter.value_or(answer.body.size())));
    ++answered_;
}

} // namespace test
