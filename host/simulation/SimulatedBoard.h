#pragma once

#include <string>

namespace board {

/// A board without hardware, for a machine that has none: a folder with a profile, a device file
/// for each kernel driver, an EEPROM image, firmware information, and a named pipe for each LED and
/// the button. What it holds is written down here byte for byte, not made with the drivers that are
/// tried on it.
///
/// The values may be changed from outside, by another process too. A LED's pipe is drained by
/// whoever hosts the board, and its state kept in a file beside it, NAME.state.
class SimulatedBoard {
public:
    /// Makes the board in `directory`, which is made, or may exist and be empty. Its parent must
    /// exist. Throws Error with the path and the system's reason; what was made by then stays.
    static SimulatedBoard create(const std::string& directory);

    /// The board profile, to be loaded like that of any other board.
    std::string profile() const;

    /// The bytes in the fan's device file, as the last write left them.
    std::string fanRecord() const;

    /// Changes what the temperature sensor reads, in one step. Throws Error where that can't be
    /// written.
    void setTemperature(double celsius) const;

    const std::string& directory() const { return m_directory; }

private:
    explicit SimulatedBoard(std::string directory) : m_directory(std::move(directory)) {}

    std::string m_directory;
};

/// A simulated board in a new temporary folder, which is removed with this object.
class ScratchBoard {
public:
    /// Throws Error where no folder can be made.
    ScratchBoard();

    const SimulatedBoard& board() const { return m_board; }

private:
    /// Apart from the board, so that it goes too where making the board fails.
    struct Folder {
        Folder();
        ~Folder();
        Folder(const Folder&) = delete;
        Folder& operator=(const Folder&) = delete;
        std::string path;
    };
    const Folder m_folder;
    const SimulatedBoard m_board;
};

} // namespace board
