#include "program/StopSignals.h"

#include <csignal>

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

TEST(StopSignals, EndAProgramThatDoesNotNoticeTheFirst) {
    int installed[2];
    ASSERT_EQ(::pipe(installed), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        boardctl::StopSignals::install();
        static_cast<void>(::write(installed[1], "", 1) == 1);
        for (;;)
            ::pause();
    }
    char byte = 0;
    ASSERT_EQ(::read(installed[0], &byte, 1), 1);
    int status = 0;
    do {
        ::kill(child, SIGTERM);
        ::sched_yield();
    } while (::waitpid(child, &status, WNOHANG) == 0);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 128 + SIGTERM);
    ::close(installed[0]);
    ::close(installed[1]);
}
