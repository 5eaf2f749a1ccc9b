#pragma once

#include <string>

#include "button/ButtonPipe.h"

namespace board {

/// Presses the button of a simulated board, which is a named pipe.
class SimulatedButton {
public:
    /// `pipe` is the button's device in the profile. Throws Error if it is not a pipe or can't be
    /// opened.
    explicit SimulatedButton(const std::string& pipe) : m_pipe(pipe, "simulated button") {}

    /// Each call writes one message and returns once it has been read, so that no message is lost
    /// or merged with the next. `press` first waits until every other program has released the
    /// button. Throws Error if nobody reads for a second; the unread message then stays in the
    /// pipe.
    void press() const;
    void release() const;

    /// Whether another program, such as the bridge of a real button, holds the button now.
    bool isHeld() const;

private:
    void awaitReader() const;

    const ButtonPipe m_pipe;
};

} // namespace board
