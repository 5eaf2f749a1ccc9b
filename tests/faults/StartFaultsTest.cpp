#include <csignal>

#include <gtest/gtest.h>

#include "faults/BoardctlRuns.h"

using faults::contains;
using support::Outcome;
using support::Program;

TEST(StartFaults, AServiceWithoutItsThreadIsAFaultAndTakesNothing) {
    const support::TempDir dir;
    const std::string board = dir.path("board/board.toml");
    Program({BOARDCTL, "sim", "create", dir.path("board")}).finish();
    const auto call = [&](std::vector<std::string> words) {
        words.insert(words.begin(), {BOARDCTL, "--board", board});
        return Program(words).finish();
    };
    constexpr char NO_THREAD[] = "CREATE THREAD: Resource temporarily unavailable";
    const struct {
        const char* plan; ///< -11: fails for all later threads too, because the host retries
        std::string service, fault;
        bool takesLines = false;
    } ROWS[] = {{"2 11", "leds", std::string("can't start the LED sequencer: ") + NO_THREAD},
                {"3 -11", "button", "START THREAD FAILED", true}};
    for (const auto& row : ROWS) {
        SCOPED_TRACE(row.service);
        Program run({"/usr/bin/env", "LD_PRELOAD=" FAULTS_SHIM, "FAULTS_TRACE=" + dir.path("trace"),
                     std::string("FAULTS_PLAN=pthread_create ") + row.plan, BOARDCTL, "--board",
                     board, "run"});
        ASSERT_TRUE(run.waitForOutput("ready\n"));
        const Outcome sent = call({"leds", "send", "system", "ready"}), status = call({"status"}),
                      check = call({"check"});
        EXPECT_EQ(contains(sent.err, "nobody reads the pipe"), !row.takesLines) << sent.err;
        EXPECT_TRUE(contains(status.out, row.fault) && contains(status.out, row.service + ": "))
            << status.out;
        EXPECT_EQ(check.status, 3);
        EXPECT_TRUE(contains(check.out, "error: running host: " + row.service + ": ")) << check.out;
        run.end(SIGTERM);
        const Outcome ended = run.finish();
        EXPECT_TRUE(contains(ended.err, "boardctl: " + row.service + ": ") &&
                    contains(ended.err, row.fault))
            << ended.err;
        EXPECT_EQ(contains(ended.out, "commands are read"), row.takesLines) << ended.out;
    }
}
