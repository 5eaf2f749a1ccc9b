#pragma once

#include <deque>
#include <string>

#include "button/ButtonPipe.h"
#include "button/InputKey.h"

namespace board {

/// Forwards presses of an input device's key to a button's pipe, as messages for the button's
/// monitor. However late the monitor reads them, no messages are lost or merged: while the pipe
/// holds a message, events wait in the kernel. If the kernel has to drop events, the key's last
/// state still arrives.
class ButtonBridge {
public:
    /// `pipe` is the button's device in the profile. If it is missing, it is created for this user
    /// only. Throws Error if it can't be created or opened, if it is not a pipe, or if another
    /// program writes this button's messages.
    ButtonBridge(KeyEvents& key, const std::string& pipe);

    /// Forwards what it can without waiting. Returns true if messages are left; they must wait
    /// until the monitor has read the message in the pipe. Otherwise there is nothing to do until
    /// the key's descriptor becomes readable. Throws Error if the key or the pipe fails.
    bool carry();

private:
    KeyEvents& m_key;
    const ButtonPipe m_pipe;
    std::deque<bool> m_waiting;
};

} // namespace board
