#pragma once

#include <sys/types.h>

/// A process that sends back each byte it gets: the plainest way to have another
/// process do something and to wait for it.
class EchoProcess
{
public:
    EchoProcess();
    ~EchoProcess();
    EchoProcess(const EchoProcess &) = delete;
    EchoProcess &operator=(const EchoProcess &) = delete;

    /// There and back.
    void callBack() const;

private:
    int socket_ = -1;
    pid_t process_ = 0;
};
