#pragma once

#include <atomic>
#include <cstdint>
#include <list>
#include <map>

#include "BOARD_API.h"
#include "TYThread.h"

/// A LED sequencer that runs by itself: steady, blinking, flashing, timed and rolling patterns from
/// a table of commands, started by lines of text in the named pipe "/tmp/evt.fifo".
///
/// A line is two words and a number, `system boot 0`; a missing number is 0. Once a tick the
/// service reads at most 80 bytes of lines, and what they start shows from the next tick on. A line
/// that two reads cut apart is two lines; a line that no row of the table matches is dropped.
///
/// Both tables and the texts in them are the caller's and must outlive the object. Everything is
/// logged under "DB_FRAMEWORK", errors at level 3, traces at level 7; no failure ends the service:
/// without a pipe it still shows its defaults, without a LED file the other LEDs. A file is opened
/// once: a LED whose driver went away and came back stays as it is until the service is made anew.
///
/// Made, shut down and released by one thread, the owner's; all else happens on the thread "led"
/// that the constructor starts. The order of virtual operations and of members is part of the
/// binary face.
class BOARD_API LedCtrl : public TYThread {
public:
    /// What a row of the command table does with its LEDs.
    enum ActionKind : std::int32_t {
        ACTION_ON = 0,    ///< steady; with a time, lit for that long
        ACTION_OFF = 1,   ///< neither steady nor blinking
        ACTION_BLINK = 2, ///< by the blink pattern; with a time, for that long
        ACTION_FLASH = 3, ///< lit for one tick
        ACTION_ROLL_UP =
            4, ///< one LED of the mask after the other, upwards; without a time endlessly
        ACTION_ROLL_DOWN = 5, ///< the same, downwards
        ACTION_ROLL_STOP = 6, ///< ends a roll with the same first word and mask
        ACTION_DEFAULTS = 7,  ///< ends all actions and runs the default rows
    };

    /// What is done with the state of the LEDs each tick. Any other value is kept and reported each
    /// tick.
    enum AccessMethod : int {
        ACCESS_FILES = 0, ///< "1" or "0" is written to each LED's file
        ACCESS_NONE = 1,  ///< nothing
    };

    /// A row of the command table. Of rows with the same words and number the first is the one that
    /// is run.
    struct CmdDef {
        const char* word1;     ///< not null
        const char* word2;     ///< not null
        std::int32_t number;   ///< what the line's third token must be
        std::uint32_t ledMask; ///< bit i is LED i
        std::int32_t action;   ///< an ActionKind
        std::int32_t group;    ///< above 0: ends what the group's last row has started
        std::int32_t timeMs;   ///< 0: until something else ends it; rounded up to whole ticks, 71
                               ///< minutes at most
        bool isDefault;        ///< run at the start and by ACTION_DEFAULTS
    };

    /// A row of the file table. Of rows with the same mask the last one holds.
    struct FileNameMap {
        std::int32_t ledMask; ///< the LED; of several bits, any of them lights it
        const char*
            fileName; ///< a file that takes "1" and "0"; not null. "1" is full light where that is
                      ///< the LED's maximum, and next to dark where the maximum is 255
    };

    /// A LED's file.
    struct FileDesc {
        const char* fileName; ///< as in the file table
        std::int32_t fd;      ///< 0 until opened, -1 where that failed
    };

    /// An action that runs.
    struct ActionDesc {
        const CmdDef* cmd;       ///< the row that started it, known by its address
        std::uint32_t ticksLeft; ///< until it ends, unless it is endless
        std::uint32_t rollBit;   ///< the bit that a roll lit last; 1 at first
        bool endless;            ///< a roll without a time
    };

    /// Starts the service. `tickMs`: the pause between two ticks in milliseconds; the tick is
    /// counted in microseconds in 32 bits, and one that comes to 0 there is refused with a line in
    /// the log. Bit i of `blinkPattern` is the blinking LEDs' state in tick i of 33, bit 31 that of
    /// the last tick too. Where no thread can be had the object stays idle.
    LedCtrl(const CmdDef* commands, unsigned commandCount, const FileNameMap* files,
            unsigned fileCount, AccessMethod method, unsigned tickMs, unsigned blinkPattern);

    /// Ends the thread. Closes nothing: that is `shutdown`'s.
    ~LedCtrl() override;

    /// The thread's body: opens the pipe and the files, runs the default rows, then ticks. Never
    /// returns.
    XCode runThread() override;

    /// Ends the thread, then closes the pipe and the LED files; the LEDs stay as they are. Harmless
    /// twice. Not on the LED thread, which would wait for itself: there it does nothing but log a
    /// line of level 3.
    ///
    /// A descriptor of the pipe stays open for the life of the process, so that readers always have
    /// a writer.
    void shutdown();

    /// Shuts down and destroys the object; not on the LED thread, as above. For objects made by
    /// `new`.
    void release();

protected:
    struct NotStarted {};

    /// For previews and tests, which tick by themselves, and hosts that give the thread another
    /// body: starts no thread. A class derived from it must call `stop()` in its own destructor
    /// where it starts one.
    LedCtrl(const CmdDef* commands, unsigned commandCount, const FileNameMap* files,
            unsigned fileCount, AccessMethod method, unsigned tickMs, unsigned blinkPattern,
            NotStarted);

    /// Makes the pipe, where there is none yet, and opens it for reading.
    void setupFifo();
    /// Keeps a writer of the pipe open and tries the pipe once; a fault is logged, no more.
    void testFifo();
    /// Opens the file of each LED.
    void openFiles();
    /// Reads the pipe once and handles each line; nothing without a pipe or lines.
    void readCmd();
    /// Runs the row that `line` names, if there is one. Always 0.
    int handleCmd(char* line);

    /// Runs `cmd`, which must be a row of the table: it is kept by its address.
    void executeCmd(const CmdDef& cmd);
    /// Advances one action by a tick and returns which LEDs it lights.
    std::uint32_t handleAction(ActionDesc& action);
    /// The same for all actions, of which those that are over are ended.
    std::uint32_t updateActions();
    /// The LEDs lit without actions: steady, blinking by the current phase, and flashing, which
    /// this ends.
    std::uint32_t getState();
    /// Advances everything by one tick and returns which LEDs are lit in it.
    std::uint32_t nextOutput();
    /// A tick, unless suspended: `nextOutput`, handled by the access method.
    void update();
    /// Ends what `cmd` has started.
    void stopAction(const CmdDef& cmd);
    /// Ends what the last row of the group of `cmd` has started.
    void stopGroupAction(const CmdDef& cmd);
    /// Ends a roll with the first word and the LEDs of `cmd`.
    void removeRollAction(const CmdDef& cmd);
    /// Ends all actions and runs the default rows.
    void setupDefault();

private:
    bool isOnLedThread() const;
    void execute(const CmdDef& cmd, bool asDefault);
    void startAction(const CmdDef& cmd);
    void setStatic(const CmdDef& cmd, std::uint32_t& mask, std::uint32_t& other);
    void writeFiles(std::uint32_t output);

    const CmdDef* m_commands;
    std::uint32_t m_commandCount;
    std::uint32_t m_tickUs;
    std::map<std::int32_t, FileDesc>
        m_files; // by mask, the order in which they are opened and written
    AccessMethod m_accessMethod;

public:
    /// The owner's switch: while true, ticks are left out. The service never sets it.
    std::atomic<bool> m_suspended;

private:
    std::int32_t m_blinkPattern;
    std::int32_t m_fifoFd;
    std::uint32_t m_steadyMask;
    std::uint32_t m_blinkMask;
    std::uint32_t m_flashMask;
    std::list<ActionDesc> m_actions;
    std::uint32_t m_actionMask; // LEDs that actions own; their static state is hidden meanwhile
    std::map<std::int32_t, const CmdDef*> m_groups;
    std::int32_t m_phase;
    std::uint32_t m_phaseCount;
};
