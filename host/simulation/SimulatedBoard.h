#pragma once

#include <functional>
#include <string>

namespace board {

/// A board without hardware: a folder with a profile, a device file for each kernel driver, an
/// EEPROM image, preferences, firmware information, and named pipes for the button and for each LED
/// of the sequencer. The content is stated byte by byte; it does not come from the drivers that are
/// tested with it.
///
/// Any process may change the values in these files. The host of the board drains the LED pipes and
/// stores each LED's state in the file NAME.state next to its pipe.
class SimulatedBoard {
public:
    /// Makes the board in `directory`, which must be empty or not exist; its parent must exist. On
    /// failure, removes everything created so far and throws Error with the path and the reason.
    static SimulatedBoard create(const std::string& directory);

    /// The same, with `fill` instead of the usual content. `fill` gets the path of the folder, in
    /// which it must write a profile "board.toml". If `fill` throws, everything is removed again.
    static SimulatedBoard create(const std::string& directory,
                                 const std::function<void(const std::string& root)>& fill);

    /// The path of the board profile.
    std::string profile() const;

    /// The bytes in the fan's device file. Throws Error if the file can't be read.
    std::string fanRecord() const;

    /// Changes what the temperature sensor reads. No reader sees a partial value. Throws Error if
    /// the value can't be written.
    void setTemperature(double celsius) const;

    const std::string& directory() const { return m_directory; }

private:
    explicit SimulatedBoard(std::string directory) : m_directory(std::move(directory)) {}

    std::string m_directory;
};

/// A simulated board in a new temporary folder, which the destructor removes.
class ScratchBoard {
public:
    /// Throws Error if the board can't be made.
    ScratchBoard();

    const SimulatedBoard& board() const { return m_board; }

private:
    /// A separate member, so that the folder is removed even if creating the board fails.
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
