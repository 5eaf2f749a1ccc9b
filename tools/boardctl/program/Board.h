#pragma once

#include <memory>
#include <string>
#include <vector>

#include "board/Host.h"
#include "profile/Profile.h"
#include "program/Options.h"
#include "simulation/SimulatedBoard.h"

namespace boardctl {

/// Whether the program works on a simulated board. False until its profile has been read.
bool worksOnSimulatedBoard();

/// The board that a command works on. The profile is the file that `--board` names, else the one
/// that `$BOARDCTL_BOARD` names, else /etc/boarddrivers/board.toml. With `--sim`, the board is a
/// simulated one that exists as long as this object.
class BoardProfile {
public:
    /// Throws WrongCall if no board is named, and board::Error if the profile is missing or wrong.
    explicit BoardProfile(const Options& options);

    /// True for every simulated board, whether made for this call or kept in a folder.
    bool isSimulated() const { return m_profile.simulated; }
    /// The simulated board that was made for this call; null if the call works on another board.
    const board::SimulatedBoard* scratch() const {
        return m_scratch ? &m_scratch->board() : nullptr;
    }
    const std::string& profilePath() const { return m_profilePath; }
    const board::Profile& profile() const { return m_profile; }

    /// The button of the profile. Throws board::Error if it has none.
    const board::NamedPath& button() const;

private:
    std::unique_ptr<board::ScratchBoard> m_scratch;
    const std::string m_profilePath;
    const board::Profile m_profile;
};

/// The same board with its drivers.
class Board : public BoardProfile {
public:
    /// Opens every device.
    explicit Board(const Options& options) : BoardProfile(options), m_host(profile()) {}

    /// Opens only devices of `kind`: all of them, or only the one with `name` if that is not empty.
    /// If there is no such device, throws a board::Error that lists the names to choose from.
    Board(const Options& options, board::DeviceKind kind, const std::string& name);

    const board::Host& host() const { return m_host; }
    board::Host& host() { return m_host; }

    /// The names of the devices that were chosen; empty if the object opened every device.
    const std::vector<std::string>& names() const { return m_names; }

private:
    const std::vector<std::string> m_names;
    board::Host m_host;
};

} // namespace boardctl
