#pragma once

#include <functional>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "board/Host.h"
#include "profile/Profile.h"
#include "simulation/SimulatedBoard.h"

/// Exit statuses that scripts rely on.
enum ExitStatus : int { DONE = 0, FAILED = 1, WRONG_CALL = 2 };

/// What the command line said, for all commands.
struct Options {
    std::string board; ///< the profile; empty: a simulated board made for the call
    bool json = false;
    bool metrics = false; ///< `info` alone offers them
    bool svg = false;     ///< `leds preview` alone offers it

    /// What the command does; set while its words are parsed, run afterwards.
    std::function<int()> command;
};

/// Thrown where the words are well formed but can't be meant; the usage is shown and the status
/// is 2.
struct WrongCall : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// What the board is that a command works on: that of `--board`, or a simulated one that goes with
/// this object.
class BoardProfile {
public:
    /// Throws board::Error where the profile is not as it should be.
    explicit BoardProfile(const Options& options);

    bool isSimulated() const { return m_scratch != nullptr; }
    const board::SimulatedBoard& simulated() const { return m_scratch->board(); }
    const std::string& profilePath() const { return m_profilePath; }
    const board::Profile& profile() const { return m_profile; }

private:
    std::unique_ptr<board::ScratchBoard> m_scratch;
    const std::string m_profilePath;
    const board::Profile m_profile;
};

/// The same board with its drivers.
class Board : public BoardProfile {
public:
    explicit Board(const Options& options) : BoardProfile(options), m_host(profile()) {}

    const board::Host& host() const { return m_host; }

    /// The names of the devices of `kind`: all, or the one called `name` where that is not empty.
    /// Throws board::Error, which lists what there is, where none is left.
    std::vector<std::string> devices(const std::string& kind, const std::string& name) const;

private:
    const board::Host m_host;
};

/// For options that name something: an empty word, as an unset shell variable makes it, is a wrong
/// call.
CLI::Validator notEmpty();

/// For one of a few words.
CLI::Validator oneOf(const std::vector<std::string>& words);

/// For spans of time: a number of seconds, up to a year without `most`.
CLI::Validator seconds(double least = 0, double most = 366 * 86400);

/// For whole numbers, which are decimal: a zero in front means nothing.
CLI::Validator decimal(long long least, long long most);

void addRun(CLI::App& app, Options& options);
void addInfo(CLI::App& app, Options& options);
void addFan(CLI::App& app, Options& options);
void addTemp(CLI::App& app, Options& options);
void addPower(CLI::App& app, Options& options);
void addLed(CLI::App& app, Options& options);
void addLeds(CLI::App& app, Options& options);
void addBd(CLI::App& app, Options& options);
void addBdEdit(CLI::App& bd, Options& options); ///< the editing commands below `bd`
void addButton(CLI::App& app, Options& options);
void addCpu(CLI::App& app, Options& options);
void addFirmware(CLI::App& app, Options& options);
void addSim(CLI::App& app, Options& options);

/// Parses the words, runs the command, returns the exit status. Messages go to standard error.
int runCommandLine(int argc, char** argv);
