#pragma once

#include <deque>
#include <string>

#include "button/ButtonPipe.h"
#include "button/InputKey.h"

namespace board {

/// Carries presses of an input device's key into a button's pipe, as the messages that the button's
/// monitor takes. None is lost or merged however late they are read: what the pipe has no room for
/// waits in the kernel, and where there are too many for that, the last level still arrives.
class ButtonBridge {
public:
    /// `pipe` is the button's device in the profile; it is made where it is not there, for this
    /// user alone. Throws Error where it is no pipe, can't be opened, or another program writes
    /// this button's messages.
    ButtonBridge(KeyEvents& key, const std::string& pipe);

    /// Moves what can be moved without waiting. True where messages are left that wait for the last
    /// one to be read; else nothing is to do before the key's descriptor can be read. Throws Error
    /// where the key or the pipe has failed.
    bool carry();

private:
    KeyEvents& m_key;
    const ButtonPipe m_pipe;
    std::deque<bool> m_waiting;
};

} // namespace board
