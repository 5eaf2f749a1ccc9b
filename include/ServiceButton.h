#pragma once

#include "BOARD_API.h"
#include "String.h"
#include "TYRunnable.h"
#include "TYThread.h"
#include "TYTime.h"
#include "XCode.h"

/// Watches the board's service button and tells an observer when it is pressed and how long it was
/// held.
///
/// The button's driver provides a file (a character device or a pipe). A read of the file waits for
/// the next message, which is a text that begins with "pressed" or "released". The thread "Button
/// Thread" opens the file, reads one message, closes the file and starts over without a pause, so
/// the thread would keep the processor busy if a read did not wait. Failures are reported to the
/// event monitor `MON_EVENT` at level 3.
///
/// The order of members and of virtual operations is part of the binary interface. The owner must
/// call `start` and the destructor on one thread, never on the button's own. A class that overrides
/// an operation must call `stop()` in its own destructor, while everything that the thread uses
/// still exists.
class BOARD_API ServiceButton : public TYRunnable {
public:
    /// The host implements this class. The button's thread makes the calls and can't be ended
    /// during a call: if the observer waits, `stop()` waits too.
    class Observer {
    public:
        /// The button went down at `pressTime`, read from the calendar clock.
        virtual void onButtonPressed(const TYTime& pressTime) = 0;

        /// The button came up. `heldFor` is the time since the last press, or since the clock's
        /// zero if there was none. The time is wrong if the clock was set in between; its seconds
        /// wrap in 32 bits.
        virtual void onButtonReleased(const TYTime& heldFor) = 0;

    protected:
        // Not virtual, because the binary interface has only these two operations. Hosts destroy
        // their own observers.
        ~Observer() = default;
    };

    /// Copies `path`, the button's file. Does not open the file or start the thread. `observer` is
    /// not owned and must outlive the thread; if it is null, each message is reported as "NO
    /// SRV-BUTTON OBSERVER".
    ServiceButton(const String& path, Observer* observer);

    /// Stops the thread.
    ~ServiceButton() override;

    /// Starts the thread, which can be started again after it has ended. If the thread is already
    /// running or can't be created, returns the thread's failure and sets `error` to "START THREAD
    /// FAILED". Success leaves `error` unchanged.
    XCode start(String& error);

    /// Ends the thread and waits until it has ended; a message that has already been read is
    /// handled first. Sends nothing to the event monitor. May be called on any thread, before
    /// `start` and more than once. On the button's own thread, `stop` only requests the end: the
    /// thread ends after the observer returns.
    XCode stop();

    /// The thread's body. Returns only after a file error. The function does not retry, but reports
    /// "FAILED TO OPEN BUTTON FILE: %s", "FAILED TO READ FROM BUTTON FILE: %s" or "FAILED TO CLOSE
    /// BUTTON FILE: %s" with the path and returns the failing status.
    XCode runThread() override;

    /// Handles one message. The thread's body calls it with 0 to 63 bytes; longer messages are cut.
    /// A message that begins with neither "pressed" nor "released" is reported as "INVALID
    /// SRV-BUTTON MESSAGE: %s".
    virtual void processButtonMessage(const String& message);

private:
    TYThread m_thread;
    String m_path;
    TYTime m_pressTime; // only the button's thread uses it
    Observer* m_observer;
};
