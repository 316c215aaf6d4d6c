#include "Platform/Audio/Published.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

namespace
{

using platform::audio::Published;

// Counts itself, and says so when it is used after its end.
struct Counted {
    static inline std::atomic<int> alive{0};
    static inline std::atomic<int> usedDead{0};

    Counted() { ++alive; }
    ~Counted()
    {
        living.store(false);
        --alive;
    }
    void use() const
    {
        if (!living.load())
            ++usedDead;
    }
    std::atomic<bool> living{true};
};

TEST(Published, GivesTheReaderWhatWasPutInPlaceLast)
{
    Published<int> published;
    EXPECT_EQ(published.acquire(), nullptr);
    published.release();
    EXPECT_EQ(published.exchange(std::make_unique<int>(1)), nullptr);
    EXPECT_EQ(*published.acquire(), 1);
    published.release();
    EXPECT_EQ(*published.exchange(std::make_unique<int>(2)), 1);
    EXPECT_EQ(*published.acquire(), 2);
    published.release();
}

TEST(Published, HandsTheOldObjectBackOnlyWhenTheReaderHasLetGo)
{
    Published<int> published;
    published.exchange(std::make_unique<int>(1));
    const int *const inUse = published.acquire();
    std::atomic<bool> exchanged{false};
    std::thread control([&] {
        published.exchange(std::make_unique<int>(2));
        exchanged = true;
    });
    // The new object is in place at once, the old one stays as long as it is used.
    while (*published.get() != 2)
        std::this_thread::yield();
    EXPECT_FALSE(exchanged);
    EXPECT_EQ(*inUse, 1);
    published.release();
    control.join();
    EXPECT_TRUE(exchanged);
}

TEST(Published, ReaderNeverMeetsADestroyedObject)
{
    {
        Published<Counted> published;
        std::atomic<bool> ends{false};
        std::thread reader([&] {
            while (!ends) {
                if (const Counted *const object = published.acquire())
                    object->use();
                published.release();
            }
        });
        for (int index = 0; index < 20000; ++index)
            published.exchange(std::make_unique<Counted>());
        ends = true;
        reader.join();
        EXPECT_EQ(Counted::alive, 1);
    }
    EXPECT_EQ(Counted::alive, 0);
    EXPECT_EQ(Counted::usedDead, 0);
}

} // namespace
