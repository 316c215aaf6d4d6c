#include "Platform/Foundation/QueueImplementation.hpp"

#include "Platform/Foundation/FatalError.hpp"

#include <cstddef>
#include <exception>

#include <pthread.h>

void DispatchQueue::Implementation::perform(std::function<void()> &task) const
{
    try {
        task();
        task = nullptr;
    } catch (const std::exception &error) {
        fatalError("A task on the queue '" + label_ + "' threw an exception: " + error.what());
    } catch (...) {
        fatalError("A task on the queue '" + label_ + "' threw an exception");
    }
}

namespace platform::foundation
{

void nameThreadAfter(const std::string &label)
{
    constexpr std::size_t longestName = 15; // the kernel's limit
    const std::string name = label.substr(label.rfind('.') + 1, longestName);
    if (!name.empty())
        pthread_setname_np(pthread_self(), name.c_str());
}

} // namespace platform::foundation
