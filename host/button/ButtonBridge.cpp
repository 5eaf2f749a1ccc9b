#include "button/ButtonBridge.h"

#include <cerrno>

#include "base/Error.h"
#include "base/File.h"

namespace board {

namespace {

const std::string& createIfMissing(const std::string& pipe) {
    if (!tryMakePipe(pipe, 0600) && errno != EEXIST)
        failWith(pipe, "can't create the pipe", errno);
    return pipe;
}

} // namespace

ButtonBridge::ButtonBridge(KeyEvents& key, const std::string& pipe)
    : m_key(key), m_pipe(createIfMissing(pipe), "button's pipe") {
    if (!m_pipe.tryLock())
        throw Error(pipe + ": another program writes this button's messages");
}

bool ButtonBridge::carry() {
    if (m_waiting.empty())
        for (const bool isDown : m_key.read())
            m_waiting.push_back(isDown);
    while (!m_waiting.empty() && m_pipe.isEmpty()) {
        if (m_waiting.front())
            m_pipe.writePressed();
        else
            m_pipe.writeReleased();
        m_waiting.pop_front();
    }
    return !m_waiting.empty();
}

} // namespace board
