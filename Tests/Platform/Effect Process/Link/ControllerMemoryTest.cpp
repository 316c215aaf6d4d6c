#include "Platform/Effect Process/ControllerMemory.hpp"

#include <gmock/gmock.h>

#include <cstdint>
#include <vector>

using platform::effect::ControllerMemory;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

using Bytes = std::vector<std::uint8_t>;

ControllerMemory &noted(ControllerMemory &memory, const std::vector<Bytes> &messages)
{
    for (const Bytes &message : messages)
        memory.note(message);
    return memory;
}

} // namespace

TEST(ControllerMemory, IsEmptyAtFirst)
{
    EXPECT_THAT(ControllerMemory().messages(), IsEmpty());
}

TEST(ControllerMemory, KeepsTheLastValueOfEachControllerAndChannel)
{
    ControllerMemory memory;
    noted(memory, {{0xB0, 64, 127}, {0xB0, 1, 10}, {0xB0, 1, 20}, {0xBF, 7, 0}});
    EXPECT_THAT(memory.messages(),
                ElementsAre(Bytes{0xB0, 1, 20}, Bytes{0xB0, 64, 127}, Bytes{0xBF, 7, 0}));
}

TEST(ControllerMemory, PutsTheBankBeforeTheProgramAndDataBehindItsParameter)
{
    ControllerMemory memory;
    noted(memory, {{0xB2, 6, 12},
                   {0xB2, 100, 0},
                   {0xB2, 101, 0},
                   {0xC2, 5},
                   {0xB2, 0, 1},
                   {0xB2, 32, 2},
                   {0xB2, 38, 3}});
    EXPECT_THAT(memory.messages(),
                ElementsAre(Bytes{0xB2, 0, 1}, Bytes{0xB2, 32, 2}, Bytes{0xC2, 5},
                            Bytes{0xB2, 100, 0}, Bytes{0xB2, 101, 0}, Bytes{0xB2, 6, 12},
                            Bytes{0xB2, 38, 3}));
}

TEST(ControllerMemory, KeepsPressureAndPitchBend)
{
    ControllerMemory memory;
    noted(memory, {{0xD3, 99}, {0xE3, 0x7F, 0x40}});
    EXPECT_THAT(memory.messages(), ElementsAre(Bytes{0xD3, 99}, Bytes{0xE3, 0x7F, 0x40}));
}

TEST(ControllerMemory, ForgetsWhatAResetOfAllControllersResets)
{
    ControllerMemory memory;
    noted(memory, {{0xB0, 1, 10}, {0xE0, 0, 0}, {0xC0, 4}, {0xB1, 1, 11}, {0xB0, 121, 0}});
    EXPECT_THAT(memory.messages(), ElementsAre(Bytes{0xC0, 4}, Bytes{0xB1, 1, 11}));
}

TEST(ControllerMemory, KeepsNoNotesModesOrSystemMessages)
{
    ControllerMemory memory;
    noted(memory, {{0x90, 60, 100},
                   {0x80, 60, 0},
                   {0xA0, 60, 1},
                   {0xB0, 123, 0},
                   {0xF8},
                   {0xF0, 1, 0xF7},
                   {},
                   {0xB0}});
    EXPECT_THAT(memory.messages(), IsEmpty());
}
