#pragma once

#include <functional>
#include <string>

namespace board {

/// A board without hardware: a folder with a profile, a device file for each kernel driver, an
/// EEPROM image, preferences, firmware information, and a named pipe for each LED and the button.
/// The content is written byte by byte, not by the drivers that are tested with it.
///
/// Any process may change the values. The host of the board drains the LED pipes and stores each
/// LED's state in the file NAME.state next to its pipe.
class SimulatedBoard {
public:
    /// Makes the board in `directory`, which must be empty or not exist; its parent must exist.
    /// Throws Error with the path and the system's reason. Everything created so far is removed
    /// again.
    static SimulatedBoard create(const std::string& directory);

    /// The same, with `fill` instead of the usual content. `fill` gets the path of the folder, in
    /// which it must write a profile "board.toml". If it throws, everything is removed again.
    static SimulatedBoard create(const std::string& directory,
                                 const std::function<void(const std::string& root)>& fill);

    /// The path of the board profile.
    std::string profile() const;

    /// The bytes in the fan's device file. Throws Error if it can't be read.
    std::string fanRecord() const;

    /// Changes what the temperature sensor reads, so that no reader sees a partial value. Throws
    /// Error if that can't be written.
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
