#include "LedCtrl.h"

#include <sys/syscall.h>
#include <unistd.h>

#include "LedLog.h"
#include "RTD.h"

using RTD::VSYSLOG;
using namespace ledlog;

LedCtrl::LedCtrl(const CmdDef* commands, unsigned commandCount, const FileNameMap* files,
                 unsigned fileCount, AccessMethod method, unsigned tickMs, unsigned blinkPattern)
    : LedCtrl(commands, commandCount, files, fileCount, method, tickMs, blinkPattern,
              NotStarted()) {
    if (m_tickUs == 0)
        VSYSLOG(CATEGORY, ERROR, "invalid LED tick period: %u ms", tickMs);
    else
        static_cast<void>(start(String::EMPTY())); // on failure, the LEDs keep their state
}

LedCtrl::LedCtrl(const CmdDef* commands, unsigned commandCount, const FileNameMap* files,
                 unsigned fileCount, AccessMethod method, unsigned tickMs, unsigned blinkPattern,
                 NotStarted)
    : TYThread("led"), m_commands(commands), m_commandCount(commandCount), m_tickUs(tickMs * 1000U),
      m_accessMethod(method), m_suspended(false),
      m_blinkPattern(static_cast<std::int32_t>(blinkPattern)), m_fifoFd(0), m_steadyMask(0),
      m_blinkMask(0), m_flashMask(0), m_actionMask(0), m_phase(0), m_phaseCount(0) {
    for (unsigned i = 0; i < fileCount; ++i)
        m_files[files[i].ledMask] = FileDesc{files[i].fileName, 0};
}

LedCtrl::~LedCtrl() {
    static_cast<void>(stop());
}

XCode LedCtrl::runThread() {
    if (m_tickUs == 0) // the loop below would have no pause
        return XCode(XCode::FAILURE);
    setupFifo();
    testFifo();
    openFiles();
    setupDefault();
    for (;;) {
        update();
        TYThread::usleep(m_tickUs); // the only place where the thread can be ended
        readCmd();
    }
}

bool LedCtrl::isOnLedThread() const {
    return getTid() == ::syscall(SYS_gettid);
}

void LedCtrl::shutdown() {
    if (isOnLedThread()) {
        VSYSLOG(CATEGORY, ERROR, "LED control can't be shut down on its own thread");
        return;
    }
    VSYSLOG(CATEGORY, TRACE, "Shutting down LED Control...");
    // End the thread before closing the files. Otherwise a tick could write to an unrelated file
    // that reuses the descriptor of a closed one.
    static_cast<void>(stop());
    if (m_fifoFd > 0)
        ::close(m_fifoFd);
    m_fifoFd = 0;
    for (const auto& [mask, file] : m_files)
        if (file.fd > 0)
            ::close(file.fd);
    m_files.clear();
}

void LedCtrl::release() {
    const bool canBeDestroyed = !isOnLedThread();
    shutdown();
    if (canBeDestroyed)
        delete this;
}
