#include "leds/LedPipe.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/Error.h"

using board::LED_PIPE;

TEST(LedPipeClaim, KnowsWhoMayWrite) {
    for (const auto& [mode, writers] : {std::pair(0602U, "everybody"),
                                        {0620U, "its owner and group"},
                                        {0644U, "its owner alone"}}) {
        ::unlink(LED_PIPE);
        ASSERT_TRUE(::mkfifo(LED_PIPE, 0600) == 0 && ::chmod(LED_PIPE, mode) == 0);
        EXPECT_EQ(board::LedPipeClaim().writers(), writers);
    }
    ::unlink(LED_PIPE);
}

TEST(LedPipeClaim, RejectsAnythingElseInThePipesPlace) {
    const auto expectFault = [](const std::string& fault) {
        try {
            const board::LedPipeClaim claim;
            ADD_FAILURE() << fault;
        } catch (const board::Error& error) {
            EXPECT_EQ(error.what(), LED_PIPE + fault);
        }
    };
    ASSERT_EQ(::mkdir(LED_PIPE, 0700), 0);
    expectFault(": is not a pipe (expected a pipe or no file: remove it)");
    ::rmdir(LED_PIPE);
    ASSERT_EQ(::symlink("/nowhere/at all", LED_PIPE), 0);
    expectFault(": can't open the pipe: No such file or directory");
    ::unlink(LED_PIPE);
}

TEST(SendLedLine, NamesWhoMayWriteIfTheUserMayNot) {
    ::unlink(LED_PIPE);
    ASSERT_TRUE(::mkfifo(LED_PIPE, 0400) == 0 && ::chmod(LED_PIPE, 0400) == 0);
    // Root may write in spite of the mode, so it becomes another user. Anybody else owns the pipe.
    const uid_t user = ::geteuid();
    ASSERT_EQ(::seteuid(user == 0 ? 65534 : user), 0);
    std::string fault;
    try {
        board::sendLedLine("a b");
    } catch (const board::Error& error) {
        fault = error.what();
    }
    ASSERT_EQ(::seteuid(user), 0);
    EXPECT_EQ(fault, LED_PIPE + std::string(": no permission to write: its owner alone may"));
    ::unlink(LED_PIPE);
}
