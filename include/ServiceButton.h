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
/// The button's driver offers a text file, a character device or a pipe, whose read waits for the
/// next event: "pressed" or "released", whatever follows the word. The thread "Button Thread" opens
/// the file, reads one message and closes it again, without a pause of its own; a file whose read
/// does not wait keeps the processor busy. What goes wrong is reported to the event monitor
/// `MON_EVENT` at level 3.
///
/// The order of members and of virtual operations is part of the binary face. `start` and the
/// destructor are the owner's, on one thread, which is never the button's own. A class that
/// overrides anything must call `stop()` in its own destructor, while what the thread uses still
/// exists.
class BOARD_API ServiceButton : public TYRunnable {
public:
    /// Implemented by the host. Called on the button's thread, which can't be ended meanwhile: what
    /// the observer waits for, `stop()` waits for too.
    class Observer {
    public:
        /// The button went down at `pressTime`, by the calendar clock.
        virtual void onButtonPressed(const TYTime& pressTime) = 0;

        /// The button came up. `heldFor` is the time since the last press, or since the clock's
        /// zero where there was none. As the clock can be set in between, it can be wrong; its
        /// seconds wrap in 32 bits.
        virtual void onButtonReleased(const TYTime& heldFor) = 0;

    protected:
        ~Observer() = default; // hosts destroy theirs; not virtual, as the binary face has just two
                               // operations
    };

    /// `path` is the button's file, copied. `observer` is not owned and must outlive the thread;
    /// null makes every message the report "NO SRV-BUTTON OBSERVER". Neither opens the file nor
    /// starts the thread.
    ServiceButton(const String& path, Observer* observer);

    /// Stops the thread.
    ~ServiceButton() override;

    /// Starts the thread, also again after its end. Where one runs already or none can be made it
    /// returns the thread's failure and puts "START THREAD FAILED" into `error`, which success
    /// leaves alone.
    XCode start(String& error);

    /// Ends the thread and waits until it has ended; a message that was read before is handled
    /// first. Nothing is reported. Harmless twice, before `start`, and on the button's thread,
    /// which it only marks: the thread then ends when the observer returns. May be called on any
    /// thread while the thread runs.
    XCode stop();

    /// The thread's body. Returns only on an error of the file: reports "FAILED TO OPEN BUTTON
    /// FILE: %s", "FAILED TO READ FROM BUTTON FILE: %s" or "FAILED TO CLOSE BUTTON FILE: %s" with
    /// the path and returns the failing status; nothing is tried again.
    XCode runThread() override;

    /// Handles one message, of 0 to 63 bytes, a longer one cut; called by the thread's body for
    /// each. A message that begins with neither word is the report "INVALID SRV-BUTTON MESSAGE:
    /// %s".
    virtual void processButtonMessage(const String& message);

private:
    TYThread m_thread;
    String m_path;
    TYTime m_pressTime; // touched by the button's thread alone
    Observer* m_observer;
};
