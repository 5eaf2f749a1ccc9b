#pragma once

#include <deque>
#include <string>

#include "button/ButtonPipe.h"
#include "button/InputKey.h"

namespace board {

/// Forwards presses of an input device's key to a button's pipe, as messages for the button's
/// monitor. However late they are read, none is lost or merged: events wait in the kernel while the
/// pipe is occupied. If the kernel has to drop some, the key's last state still arrives.
class ButtonBridge {
public:
    /// `pipe` is the button's device in the profile. If it is missing it is created, for this user
    /// only. Throws Error if it can't be created or opened, if it is not a pipe, or if another
    /// program writes this button's messages.
    ButtonBridge(KeyEvents& key, const std::string& pipe);

    /// Moves what can be moved without waiting. Returns true if messages are left, which must wait
    /// until the last one has been read; otherwise there is nothing to do until the key's
    /// descriptor becomes readable. Throws Error if the key or the pipe fails.
    bool carry();

private:
    KeyEvents& m_key;
    const ButtonPipe m_pipe;
    std::deque<bool> m_waiting;
};

} // namespace board
