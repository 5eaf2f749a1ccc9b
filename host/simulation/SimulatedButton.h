#pragma once

#include <string>

#include "button/ButtonPipe.h"

namespace board {

/// The button of a simulated board, a named pipe, from the side of the finger.
class SimulatedButton {
public:
    /// `pipe` is the button's device in the profile. Throws Error where it is no pipe or can't be
    /// opened.
    explicit SimulatedButton(const std::string& pipe) : m_pipe(pipe, "simulated button") {}

    /// One message each, which has been read when the call returns, so that none is lost or merged
    /// with the next; one finger at a time: who presses waits until others have released. Throws
    /// Error where nobody reads for a second; the message then stays in the pipe.
    void press() const;
    void release() const;

    /// Whether another finger, or the bridge of a real button, is on it now.
    bool isHeld() const;

private:
    void awaitReader() const;

    const ButtonPipe m_pipe;
};

} // namespace board
