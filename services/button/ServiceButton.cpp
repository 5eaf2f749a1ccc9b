#include "ServiceButton.h"

#include <fcntl.h>

#include "RTD.h"
#include "TYFile.h"

namespace {

constexpr int ERROR_LEVEL = 3;
constexpr unsigned FILE_MODE = 0644;
constexpr unsigned LONGEST_MESSAGE = 63;

void report(const String& text) {
    if (RTD::Monitor* const monitor = MON_EVENT.load())
        monitor->report(ERROR_LEVEL, text);
}

TYTime now() {
    TYTime time;
    static_cast<void>(time.getSystemClock(TYTime::SYSTEM_CLOCK)); // 0 if the clock fails
    return time;
}

} // namespace

ServiceButton::ServiceButton(const String& path, Observer* observer)
    : m_thread("Button Thread", this), m_path(path), m_observer(observer) {}

// Stops the thread here, because the destructor of `m_thread` runs only after `m_path` is
// destroyed.
ServiceButton::~ServiceButton() {
    static_cast<void>(ServiceButton::stop());
}

XCode ServiceButton::start(String& error) {
    XCode status = m_thread.start(String::EMPTY());
    if (!status.isSuccess())
        error = "START THREAD FAILED";
    return status;
}

XCode ServiceButton::stop() {
    return m_thread.stop();
}

XCode ServiceButton::runThread() {
    TYFile file(m_path, true, false);
    XCode status;
    String error;
    for (;;) {
        status = file.open(O_RDONLY, FILE_MODE, 0);
        if (!status.isSuccess()) {
            error = String::format("FAILED TO OPEN BUTTON FILE: %s", m_path.c_str());
            break;
        }
        char message[LONGEST_MESSAGE + 1];
        unsigned length = 0;
        status = file.readOnce(message, LONGEST_MESSAGE, length, true);
        if (!status.isSuccess()) {
            error = String::format("FAILED TO READ FROM BUTTON FILE: %s", m_path.c_str());
            break;
        }
        status = file.close();
        if (!status.isSuccess()) {
            error = String::format("FAILED TO CLOSE BUTTON FILE: %s", m_path.c_str());
            break;
        }
        message[length] = '\0';
        const TYThread::Undisturbed inHostCode;
        processButtonMessage(message);
    }
    const TYThread::Undisturbed inHostCode;
    report(error);
    static_cast<void>(file.close());
    return status;
}

void ServiceButton::processButtonMessage(const String& message) {
    if (!m_observer) {
        report("NO SRV-BUTTON OBSERVER");
    } else if (message.startsWith("pressed")) {
        m_pressTime = now();
        m_observer->onButtonPressed(m_pressTime);
    } else if (message.startsWith("released")) {
        m_observer->onButtonReleased(now() - m_pressTime);
    } else {
        report(String::format("INVALID SRV-BUTTON MESSAGE: %s", message.c_str()));
    }
}
