#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <functional>
#include <memory>
#include <new>

#include <gtest/gtest.h>

#include "CBoardDescrTamarin.h"
#include "support/Descriptors.h"
#include "support/DriverFixtures.h"
#include "support/TempDir.h"

namespace {

std::atomic<unsigned> s_untilFailure{0}; ///< 0: memory does not run out
std::atomic<long> s_held{0};

void* take(std::size_t size) {
    if (s_untilFailure > 0 && --s_untilFailure == 0)
        throw std::bad_alloc();
    void* const memory = std::malloc(size > 0 ? size : 1);
    if (!memory)
        throw std::bad_alloc();
    ++s_held;
    return memory;
}

void give(void* memory) noexcept {
    if (memory)
        --s_held;
    std::free(memory);
}

} // namespace

// These replace the operators of the whole program, including its libraries.
void* operator new(std::size_t size) {
    return take(size);
}
void* operator new[](std::size_t size) {
    return take(size);
}
void operator delete(void* memory) noexcept {
    give(memory);
}
void operator delete[](void* memory) noexcept {
    give(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    give(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    give(memory);
}

namespace {

using Tags = std::vector<std::string>;
using support::fromHex;
using support::tagsOf;

/// Longer than what a buffer stores without allocating.
const std::string LONG = "00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10 11";
const std::string LONG_DATA = "/18:" + LONG;

const Tags BEFORE = {"45/4:12 34 AB CD", "9/1:01", "5" + LONG_DATA};

void fill(CBoardDescr& board) {
    EXPECT_TRUE(board.addTag(45, fromHex("12 34 AB CD")).isSuccess());
    EXPECT_TRUE(board.addTag(9, fromHex("01")).isSuccess());
    EXPECT_TRUE(board.addTag(5, fromHex(LONG)).isSuccess());
}

/// Runs `step` on the list `BEFORE` with more and more memory until it has enough. Whenever memory
/// runs out, `check` learns whether `step` threw. No memory may leak, and the list must still work.
void withEverLessMemory(const std::function<void(CBoardDescr&)>& step,
                        const std::function<void(CBoardDescr&, bool)>& check,
                        const char* device = nullptr) {
    unsigned failures = 0;
    for (bool hasEnough = false; !hasEnough; ++failures) {
        SCOPED_TRACE("allocation " + std::to_string(failures + 1));
        const long held = s_held;
        const auto open = support::openDescriptors();
        {
            auto board = std::make_unique<CBoardDescr>(device, 4, 512);
            fill(*board);
            bool isThrown = false;
            s_untilFailure = failures + 1;
            try {
                step(*board);
            } catch (const std::bad_alloc&) {
                isThrown = true;
            }
            hasEnough = s_untilFailure.exchange(0) > 0;
            EXPECT_FALSE(hasEnough && isThrown);
            check(*board, isThrown);
            EXPECT_TRUE(board->addTag(7, fromHex("02")).isSuccess());
            EXPECT_EQ(tagsOf(*board).back(), "7/1:02");
        }
        EXPECT_EQ(s_held, held);
        EXPECT_EQ(support::openDescriptors(), open);
    }
    EXPECT_GT(failures, 1U) << "no memory was asked for";
}

Tags beforeAnd(std::size_t position, const std::string& tag) {
    Tags tags = BEFORE;
    tags.insert(tags.begin() + static_cast<std::ptrdiff_t>(position), tag);
    return tags;
}

bool isOneOf(const Tags& found, const std::vector<Tags>& expected) {
    return std::find(expected.begin(), expected.end(), found) != expected.end();
}

} // namespace

TEST(DescriptorMemory, ANewTagIsInTheListOrTheListAsItWas) {
    const auto data = fromHex(LONG);
    withEverLessMemory(
        [&](CBoardDescr& board) { static_cast<void>(board.addTag(10, data)); },
        [](CBoardDescr& board, bool isThrown) {
            const Tags found = tagsOf(board);
            EXPECT_TRUE(isThrown ? found == BEFORE
                                 : isOneOf(found, {beforeAnd(3, "10" + LONG_DATA),
                                                   beforeAnd(3, "10/0:")})); // only the data failed
        });
    withEverLessMemory([&](CBoardDescr& board) { static_cast<void>(board.insertTag(1, 10, data)); },
                       [](CBoardDescr& board, bool isThrown) {
                           const Tags found = tagsOf(board);
                           EXPECT_TRUE(isThrown ? found == BEFORE
                                                : isOneOf(found, {beforeAnd(1, "10" + LONG_DATA),
                                                                  beforeAnd(1, "10/0:")}));
                       });
}

TEST(DescriptorMemory, AChangedTagHoldsTheNewDataOrNone) {
    String error;
    const auto data = fromHex(LONG);
    withEverLessMemory(
        [&](CBoardDescr& board) { static_cast<void>(board.setTag(9, 0, data, error)); },
        [](CBoardDescr& board, bool isThrown) {
            EXPECT_FALSE(isThrown);
            const Tags found = tagsOf(board);
            EXPECT_TRUE(isOneOf(
                found, {{BEFORE[0], "9" + LONG_DATA, BEFORE[2]}, {BEFORE[0], "9/0:", BEFORE[2]}}));
        });
}

TEST(DescriptorMemory, AMacAddressIsSetOrItsTagIsEmptyOrAsItWas) {
    String error;
    withEverLessMemory(
        [&](CBoardDescr& board) { static_cast<void>(board.addMacAddress("02:00:00:00:00:07", 0)); },
        [&](CBoardDescr& board, bool) {
            EXPECT_TRUE(isOneOf(tagsOf(board), {BEFORE, beforeAnd(3, "1/0:"),
                                                beforeAnd(3, "1/8:02 00 00 00 00 07 00 00")}));
        });
    withEverLessMemory(
        [&](CBoardDescr& board) {
            static_cast<void>(board.insertTag(0, 1, fromHex("FF FF FF FF FF FF FF FF")));
            static_cast<void>(board.setMacAddress(0, "02:00:00:00:00:07", 0, error));
        },
        [&](CBoardDescr& board, bool) {
            EXPECT_TRUE(isOneOf(tagsOf(board), {BEFORE, beforeAnd(0, "1/0:"),
                                                beforeAnd(0, "1/8:FF FF FF FF FF FF FF FF"),
                                                beforeAnd(0, "1/8:02 00 00 00 00 07 00 00")}));
        });
}

TEST(DescriptorMemory, ALoadThatRunsOutHoldsTheOldTagsOrTheFirstOfTheNew) {
    const support::TempDir dir;
    const auto image =
        fromHex("00 0A 00 06 01 02 00 0B 00 16 " + LONG + " 00 0C 00 16 " + LONG + " 00 00");
    dir.write("eeprom", std::string(image.data(), image.length()));
    const std::string path = dir.path("eeprom");
    const Tags after = {"10/2:01 02", "11" + LONG_DATA, "12" + LONG_DATA, "0/0:"};
    String error;
    const auto check = [&](CBoardDescr& board, bool isThrown) {
        const Tags found = tagsOf(board);
        const bool isStart =
            found.size() <= after.size() && std::equal(found.begin(), found.end(), after.begin());
        EXPECT_TRUE(isThrown ? found == BEFORE || isStart : found == after);
        EXPECT_TRUE(board.importBD(image, error).isSuccess());
        EXPECT_EQ(tagsOf(board), after);
    };
    withEverLessMemory([&](CBoardDescr& board) { static_cast<void>(board.importBD(image, error)); },
                       check);
    withEverLessMemory([&](CBoardDescr& board) { static_cast<void>(board.readBD(error)); }, check,
                       path.c_str());
}

TEST(DescriptorMemory, StoringAndReadingLeaveTheListAsItIs) {
    const support::TempDir dir;
    dir.write("eeprom", "........");
    const std::string path = dir.path("eeprom");
    const auto isUnchanged = [](CBoardDescr& board, bool) { EXPECT_EQ(tagsOf(board), BEFORE); };
    withEverLessMemory(
        [](CBoardDescr& board) {
            String error, text;
            TString<char> data;
            static_cast<void>(board.getTag(5, 0, data, error));
            static_cast<void>(board.getTagString(5, 0, text, error));
            static_cast<void>(board.getTag(77, 0, data, error));
        },
        isUnchanged);
    withEverLessMemory(
        [](CBoardDescr& board) {
            String error;
            static_cast<void>(board.writeBD(error));
        },
        [&](CBoardDescr& board, bool isThrown) {
            isUnchanged(board, isThrown);
            if (isThrown) {
                EXPECT_EQ(dir.read("eeprom"), "........") << "written in part";
            }
        },
        path.c_str());
}

TEST(DescriptorMemory, AFailedConstructionLosesNothing) {
    const long held = s_held;
    for (unsigned failing = 1;; ++failing) {
        s_untilFailure = failing;
        CDriver* driver = nullptr;
        try {
            driver = CREATE_BD();
        } catch (const std::bad_alloc&) {
            EXPECT_EQ(s_held, held) << failing;
        }
        s_untilFailure = 0;
        if (!driver)
            continue;
        EXPECT_GT(failing, 1U);
        driver->release();
        break;
    }
    EXPECT_EQ(s_held, held);
}
