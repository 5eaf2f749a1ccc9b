#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <list>
#include <map>

#include "BOARD_API.h"
#include "TYThread.h"

/// An LED sequencer on a thread of its own. It shows steady, blinking, flashing, timed and rolling
/// patterns, which the rows of a command table define. A line of text written to the named pipe
/// "/tmp/evt.fifo" names the row to run.
///
/// A line has two words and a number, such as `system boot 0`; a missing number is 0. Once per
/// tick, the service reads at most 80 bytes from the pipe; the LEDs show the effect from the next
/// tick on. A line that is split between two reads becomes two lines. A line that matches no row of
/// the table is dropped.
///
/// The caller owns the command table, the file table and the texts in them; all of these must
/// outlive the object. Under "DB_FRAMEWORK", the service logs errors at level 3 and traces at
/// level 7. No failure ends the service: without a pipe it still shows its defaults, and if one
/// LED's file is missing, it still drives the other LEDs. Files are opened once per start. If an
/// LED's kernel driver is removed and comes back, the service does not drive that LED until the
/// next start.
///
/// Only one thread, the owner's, may create, stop, start, shut down and release the object.
/// Everything else happens on the thread "led", which the constructor starts. The order of virtual
/// operations and of members is part of the binary interface.
class BOARD_API LedCtrl : public TYThread {
public:
    /// What a row of the command table does with its LEDs.
    enum ActionKind : std::int32_t {
        ACTION_ON = 0,        ///< lit steadily; with a time, only for that long
        ACTION_OFF = 1,       ///< ends the steady or blinking state
        ACTION_BLINK = 2,     ///< follows the blink pattern; with a time, only for that long
        ACTION_FLASH = 3,     ///< lit for one tick
        ACTION_ROLL_UP = 4,   ///< one LED of the mask after another, upward; endless without a time
        ACTION_ROLL_DOWN = 5, ///< the same, downward
        ACTION_ROLL_STOP = 6, ///< ends a roll that has the same first word and mask
        ACTION_DEFAULTS = 7,  ///< ends all actions and runs the default rows
    };

    /// What to do with the state of the LEDs in each tick. Any other value logs an error in every
    /// tick.
    enum AccessMethod : int {
        ACCESS_FILES = 0, ///< write "1" or "0" to each LED's file
        ACCESS_NONE = 1,  ///< nothing
    };

    /// A row of the command table. If several rows have the same words and number, the first one
    /// runs.
    struct CmdDef {
        const char* word1;     ///< not null
        const char* word2;     ///< not null
        std::int32_t number;   ///< the line's third token must be this number
        std::uint32_t ledMask; ///< bit i is LED i
        std::int32_t action;   ///< an ActionKind
        std::int32_t group;    ///< if above 0, the row first ends what the group's last row started
        /// The duration in milliseconds, rounded up to whole ticks; with 0, the action lasts until
        /// something else ends it. The duration is converted to microseconds in 32 bits, so a
        /// duration above about 71 minutes wraps and becomes too short. A negative number wraps to
        /// an arbitrary duration; another row of the group then ends the action only if the action
        /// is a roll.
        std::int32_t timeMs;
        bool isDefault; ///< the row runs at each start and on ACTION_DEFAULTS
    };

    /// A row of the file table. If several rows have the same mask, the last one counts.
    struct FileNameMap {
        std::int32_t ledMask; ///< the LED's bit; if several are set, any of them lights it
        /// A file that accepts "1" and "0"; not null. "1" is full brightness if the LED's maximum
        /// is 1, and almost dark if it is 255.
        const char* fileName;
    };

    /// An LED's file.
    struct FileDesc {
        const char* fileName; ///< from the file table
        std::int32_t fd;      ///< 0 until opened, -1 if opening failed
    };

    /// A running action.
    struct ActionDesc {
        const CmdDef* cmd;       ///< the row that started it, identified by its address
        std::uint32_t ticksLeft; ///< ticks until the action ends, unless it is endless
        std::uint32_t rollBit;   ///< the bit that a roll lit last; 1 at first
        bool endless;            ///< a roll without a time
    };

    /// What the sequencer shows and why. The numbers are copies; the two containers are references
    /// and also show later changes.
    struct View {
        std::uint32_t steadyMask; ///< LEDs lit steadily, unless an action owns them
        std::uint32_t blinkMask;  ///< LEDs that blink, unless an action owns them
        std::uint32_t flashMask;  ///< LEDs lit in the next tick only, unless an action owns them
        std::uint32_t actionMask; ///< LEDs owned by actions, which hide the states above
        const std::list<ActionDesc>& actions;                ///< the oldest first
        const std::map<std::int32_t, const CmdDef*>& groups; ///< the last row of each group
        std::int32_t phase;       ///< blinking LEDs are lit if bit 0 is set
        std::uint32_t phaseCount; ///< ticks since the blink pattern was loaded, 0 to 32
    };

    /// Starts the service. `tickMs` is the pause between two ticks in milliseconds. It is converted
    /// to microseconds in 32 bits; if that yields 0, the constructor logs an error and starts no
    /// thread. If the thread can't be created, the constructor logs nothing and the LEDs stay as
    /// they are.
    ///
    /// A blink period has 33 ticks: tick i, counted from 0, shows bit i of `blinkPattern`, and the
    /// last tick shows bit 31 again. The pattern is first loaded after 32 ticks; until then,
    /// blinking LEDs are dark.
    LedCtrl(const CmdDef* commands, unsigned commandCount, const FileNameMap* files,
            unsigned fileCount, AccessMethod method, unsigned tickMs, unsigned blinkPattern);

    /// Ends the thread but closes nothing. Unless `shutdown` was called before, the descriptors of
    /// the pipe and of the LED files stay open for the life of the process.
    ~LedCtrl() override;

    /// The thread's body: opens the pipe and the files, runs the default rows, then ticks until the
    /// thread is stopped. Returns only if the tick is 0 microseconds, and then immediately, with a
    /// failure.
    ///
    /// After `stop()` the service can be started again. A restart closes the pipe and the LED files
    /// that are still open before it opens them again. LEDs that were lit steadily or blinking with
    /// no time limit stay that way, unless a default row changes them.
    XCode runThread() override;

    /// Ends the thread, then closes the pipe and the LED files; the LEDs keep their state. A second
    /// call does nothing. On the LED thread, which would have to wait for itself, `shutdown` only
    /// logs an error.
    ///
    /// The list of LED files is cleared, so the service drives no LED if it is started again.
    ///
    /// Each start opens the pipe for writing and leaves that descriptor open for the life of the
    /// process, so that the pipe always has a writer.
    void shutdown();

    /// Shuts down and deletes the object, which must have been created with `new`. Like `shutdown`,
    /// it only logs an error on the LED thread.
    void release();

protected:
    struct NotStarted {};

    /// Creates the object without starting the thread, for previews and tests, which call
    /// `nextOutput` or `update` themselves, and for hosts that override `runThread`. A derived
    /// class that starts the thread must call `stop()` in its own destructor.
    LedCtrl(const CmdDef* commands, unsigned commandCount, const FileNameMap* files,
            unsigned fileCount, AccessMethod method, unsigned tickMs, unsigned blinkPattern,
            NotStarted);

    /// Creates the pipe if it is missing, and opens it for reading. If the path is a symbolic link,
    /// does not follow it.
    void setupFifo();
    /// Opens the pipe for writing, leaves that descriptor open, and tests the pipe once. Only logs
    /// faults. Does not change a link or a file that is not a pipe.
    void testFifo();
    /// Opens each LED's file.
    void openFiles();
    /// Reads the pipe once and calls `handle` with each line; does nothing if there is no pipe or
    /// no line.
    void readLines(const std::function<void(char* line)>& handle);
    /// Reads the pipe once, logs each line and runs the row that it names.
    void readCmd();
    /// Returns the row that `line` names; null if there is none.
    const CmdDef* find(const char* line) const;
    /// Runs the row that `line` names, if any. Always returns 0.
    int handleCmd(char* line);

    /// Runs `cmd`, which must be a row of the table because actions keep its address.
    void executeCmd(const CmdDef& cmd);
    /// Advances one action by a tick and returns the LEDs that it lights.
    std::uint32_t handleAction(ActionDesc& action);
    /// Ends the actions whose time is over, advances the others by a tick and returns the LEDs that
    /// they light.
    std::uint32_t updateActions();
    /// Returns the LEDs that are lit without an action: steady LEDs, LEDs that blink and are now
    /// lit, and flashing LEDs. Ends the flashes.
    std::uint32_t getState();
    /// Advances everything by one tick and returns the LEDs that are lit in it.
    std::uint32_t nextOutput();
    /// Unless the LEDs are suspended, advances everything by one tick and shows the result with the
    /// access method.
    void update();
    /// Ends what `cmd` started.
    void stopAction(const CmdDef& cmd);
    /// Ends what the last row in the group of `cmd` started.
    void stopGroupAction(const CmdDef& cmd);
    /// Ends one roll whose first word and LEDs are those of `cmd`.
    void removeRollAction(const CmdDef& cmd);
    /// Ends all actions and runs the default rows.
    void setupDefault();

    /// Returns the current state. Its references are valid as long as this object exists. Call this
    /// function only on the LED thread, or while no LED thread is running.
    View view() const;

private:
    bool isOnLedThread() const;
    void execute(const CmdDef& cmd, bool asDefault);
    void startAction(const CmdDef& cmd);
    void setStatic(const CmdDef& cmd, std::uint32_t& mask, std::uint32_t& other);
    void writeFiles(std::uint32_t output);

    const CmdDef* m_commands;
    std::uint32_t m_commandCount;
    std::uint32_t m_tickUs;
    std::map<std::int32_t, FileDesc> m_files; // keyed by mask; opened and written in this order
    AccessMethod m_accessMethod;

public:
    /// While this is true, the LEDs are suspended: nothing is written to them, the blink pattern is
    /// frozen and timed actions do not count down. The thread still reads the pipe and runs
    /// commands; the LEDs show the effect once the value is false again. Only the owner sets it;
    /// the service never does.
    std::atomic<bool> m_suspended;

private:
    std::int32_t m_blinkPattern;
    std::int32_t m_fifoFd;
    std::uint32_t m_steadyMask;
    std::uint32_t m_blinkMask;
    std::uint32_t m_flashMask;
    std::list<ActionDesc> m_actions;
    std::uint32_t m_actionMask; // LEDs owned by actions, which hide their static state
    std::map<std::int32_t, const CmdDef*> m_groups;
    std::int32_t m_phase;
    std::uint32_t m_phaseCount;
};
