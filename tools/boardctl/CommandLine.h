#pragma once

#include <functional>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "Host.h"
#include "Profile.h"
#include "SimulatedBoard.h"

/// Exit statuses that scripts rely on.
enum ExitStatus : int { DONE = 0, FAILED = 1, WRONG_CALL = 2 };

/// What the command line said, for all commands.
struct Options {
    std::string board; ///< the profile; empty: a simulated board made for the call
    bool json = false;

    /// What the command does; set while its words are parsed, run afterwards.
    std::function<int()> command;
};

/// Thrown where the words are well formed but can't be meant; the usage is shown and the status is 2.
struct WrongCall : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The board that a command works on: that of `--board`, or a simulated one that goes with this object.
class Board {
public:
    /// Throws board::Error where the profile is not as it should be.
    explicit Board(const Options& options);

    bool isSimulated() const { return m_scratch != nullptr; }
    const board::ScratchBoard& scratch() const { return *m_scratch; }
    const std::string& profilePath() const { return m_profilePath; }
    const board::Host& host() const { return m_host; }

private:
    std::unique_ptr<board::ScratchBoard> m_scratch;
    const std::string m_profilePath;
    const board::Profile m_profile;
    const board::Host m_host;
};

/// For options that name something: an empty word, as an unset shell variable makes it, is a wrong call.
CLI::Validator notEmpty();

void addRun(CLI::App& app, Options& options);
void addInfo(CLI::App& app, Options& options);
void addFan(CLI::App& app, Options& options);
void addBd(CLI::App& app, Options& options);
void addSim(CLI::App& app, Options& options);

/// Parses the words, runs the command, returns the exit status. Messages go to standard error.
int runCommandLine(int argc, char** argv);
