#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "support/Transcript.h"

namespace support {

/// A simulated board in the folder "sim". Removes the LED pipe before and after each test.
class HostedBoard : public testing::Test {
protected:
    void SetUp() override {
        expectTranscript(m_dir,
                         "\n$ rm -f /tmp/evt.fifo; boardctl sim create sim >log; ln -s sim/* .\n");
    }
    void TearDown() override { ::unlink("/tmp/evt.fifo"); }

    std::vector<std::string> words(std::vector<std::string> more) const {
        more.insert(more.begin(), {BOARDCTL, "--board", m_dir.path("sim/board.toml")});
        return more;
    }

    /// The words of a `run` with environment variables, which are written as in a shell.
    std::vector<std::string> runWith(const std::string& variables) const {
        return {"/bin/sh", "-c", "export " + variables + "; exec \"$0\" --board \"$1\" run",
                BOARDCTL, m_dir.path("board.toml")};
    }

    const TempDir m_dir;
};

} // namespace support
