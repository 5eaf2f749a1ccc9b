#pragma once

#include <string>

namespace board {

/// The button of a simulated board, a named pipe, from the side of the finger. Holds the pipe open for both,
/// so that a message stays in it until it is read.
class SimulatedButton {
public:
    /// `pipe` is the button's device in the profile. Throws Error where it is no pipe or can't be opened.
    explicit SimulatedButton(const std::string& pipe);
    ~SimulatedButton();
    SimulatedButton(const SimulatedButton&) = delete;
    SimulatedButton& operator=(const SimulatedButton&) = delete;

    /// One message each, which has been read when the call returns, so that none is lost or merged with the
    /// next; one finger at a time: who presses waits until others have released. Throws Error where nobody
    /// reads for a second; the message then stays in the pipe.
    void press() const;
    void release() const;

private:
    void lock(short type) const;
    void send(const std::string& message) const;
    void awaitReader() const;

    const std::string m_path;
    int m_pipe;
};

} // namespace board
