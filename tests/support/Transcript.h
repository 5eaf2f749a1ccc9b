#pragma once

#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "support/Program.h"
#include "support/TempDir.h"

namespace support {

/// The shell functions of a transcript. `json` prints boardctl's JSON document on one line. `wrong`
/// prints the first message of a call, which must be rejected with status 2. `steady` removes or
/// replaces what differs from run to run and from machine to machine.
constexpr char TRANSCRIPT_SETTING[] = R"(cd "$1"
umask 022
export XDG_STATE_HOME="$1/state"
unset TERM BOARDCTL_BOARD
boardctl() { "$0" "$@"; }
json() {
    boardctl --format json "$@" >document; status=$?
    tr -s '\n ' ' ' <document | sed 's/ $//'; echo
    return $status
}
wrong() {
    boardctl "$@" 2>messages; status=$?
    head -n 1 messages
    [ $status = 2 ]
}
steady() {
    sed '/fs.protected/d; s/20..-..-..T[0-9:.]*[+-][0-9]*/TIME/; s/(there are: .*)/(there are: ...)/; s/ *$//'
}
)";

/// Runs the commands of a transcript, its lines that begin with "$ ", in `dir`. Returns the
/// commands with their real output: standard output as it is, standard error with "! " before each
/// line, an exit status other than 0 in brackets.
inline std::string replay(const TempDir& dir, const std::string& transcript) {
    std::istringstream lines(transcript);
    std::string result = "\n";
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind("$ ", 0) != 0)
            continue;
        const Outcome outcome =
            Program({"/bin/sh", "-c", TRANSCRIPT_SETTING + line.substr(2), BOARDCTL, dir.path("")})
                .finish();
        result += line + "\n" + outcome.out;
        std::istringstream messages(outcome.err);
        for (std::string message; std::getline(messages, message);)
            result += (message.empty() ? "!" : "! " + message) + "\n";
        if (outcome.status != 0)
            result += "[" + std::to_string(outcome.status) + "]\n";
    }
    return result;
}

inline void expectTranscript(const TempDir& dir, const std::string& transcript) {
    EXPECT_EQ(replay(dir, transcript), transcript);
}

} // namespace support
