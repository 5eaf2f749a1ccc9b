#include "leds/LedService.h"

#include <filesystem>
#include <set>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/leds/LedTables.h"
#include "support/Descriptors.h"

using board::LED_PIPE;
using support::row;
using support::TempDir;

namespace {

struct Words {
    std::string operator()(const board::event::LedCommand& e) const { return "line " + e.line; }
    std::string operator()(const board::event::LedCommandUnknown& e) const {
        return "unknown " + e.line;
    }
    std::string operator()(const board::event::LedChanged& e) const {
        return e.name + (e.isLit ? " on" : " off");
    }
    std::string operator()(const board::event::LedPipeGone& e) const { return "gone " + e.reason; }
    std::string operator()(const board::event::LedPipeBack& e) const {
        return (e.isTakenOver ? "taken over " : "back ") + e.writers;
    }
    std::string operator()(const board::event::LedFileGone& e) const {
        return e.name + " gone " + e.reason;
    }
    std::string operator()(const board::event::LedFileBack& e) const { return e.name + " back"; }
    std::string operator()(const board::event::FaultReport& e) const { return "fault " + e.text; }
    template <class Other>
    std::string operator()(const Other&) const {
        return "other";
    }
};

class LedServiceTest : public testing::Test {
protected:
    LedServiceTest() { ::unlink(LED_PIPE); }
    ~LedServiceTest() override { std::filesystem::remove_all(LED_PIPE); }

    /// Each ended service leaves one descriptor open: the library's writing end of its first pipe.
    void expectDescriptors(int services) const {
        EXPECT_EQ(support::openDescriptors(), m_descriptors + services);
    }

    /// The next event in words; "nothing" if none comes in a minute.
    std::string next() {
        if (m_waiting.empty()) {
            pollfd arrived{m_events.descriptor(), POLLIN, 0};
            if (::poll(&arrived, 1, 60000) != 1)
                return "nothing";
            for (const auto& entry : m_events.take().entries)
                m_waiting.push_back(std::visit(Words(), entry.event));
        }
        std::string event = m_waiting.front();
        m_waiting.erase(m_waiting.begin());
        return event;
    }
    std::set<std::string> next(int count) {
        std::set<std::string> events;
        while (count-- > 0)
            events.insert(next());
        return events;
    }

    /// A table with a tick of 1 ms, whose default row lights LED `file`. Makes that LED's file.
    board::LedSequencerProfile table(const std::string& rows, const std::string& files = "") const {
        board::LedSequencerProfile profile = support::ledsOf(
            "[leds]\ntick_ms = 1\n[[leds.file]]\nmask = 1\npath = 'file'\n" + files +
            row("system boot", "mask = 7\naction = 'on'\ngroup = 1\ndefault = true") + rows);
        m_dir.write("file", "");
        for (auto& file : profile.files)
            if (file.path.path.rfind("led:", 0) != 0)
                file.path.path = m_dir.path(std::filesystem::path(file.path.path).filename());
        return profile;
    }

    const TempDir m_dir;
    board::EventQueue m_events;

private:
    const std::ptrdiff_t m_descriptors = support::openDescriptors();
    std::vector<std::string> m_waiting;
};

} // namespace

TEST_F(LedServiceTest, MakesThePipeAgainAndReportsEachLossOnce) {
    const mode_t mask = ::umask(077);
    const board::LedSequencerProfile profile = table("");
    std::optional<board::LedService> leds(std::in_place, profile, false, m_events);
    const auto expectLine = [&] {
        board::sendLedLine("system boot");
        EXPECT_EQ(next(), "line system boot");
    };
    const std::string path = LED_PIPE, back = "back its owner alone";
    expectLine();
    for (int round = 0; round < 3; ++round) {
        ::unlink(LED_PIPE);
        EXPECT_EQ(next(), "gone " + path + ": was removed");
        EXPECT_EQ(next(), back);
        expectLine();
    }
    ASSERT_EQ(::mkfifo(m_dir.path("other").c_str(), 0622), 0);
    ASSERT_EQ(::chmod(m_dir.path("other").c_str(), 0622), 0);
    ASSERT_EQ(::rename(m_dir.path("other").c_str(), LED_PIPE), 0);
    EXPECT_EQ(next(), "gone " + path + ": was replaced");
    EXPECT_EQ(next(), "back everybody");
    expectLine();
    m_dir.write("other", "");
    ASSERT_EQ(::rename(m_dir.path("other").c_str(), LED_PIPE), 0);
    EXPECT_EQ(next(), "gone " + path + ": is not a pipe (expected a pipe or no file: remove it)");
    ::unlink(LED_PIPE);
    EXPECT_EQ(next(), back);
    expectLine();
    ::umask(mask);
    leds.reset();
    expectDescriptors(1);
}

TEST_F(LedServiceTest, PicksUpAPipeThatCouldNotBeMadeAtTheStart) {
    const board::LedSequencerProfile profile = table("");
    std::filesystem::create_directory(LED_PIPE);
    const board::LedService leds(profile, false, m_events);
    EXPECT_EQ(leds.pipeFault(), std::string(LED_PIPE) + ": is not a pipe (expected a pipe or no "
                                                        "file: remove it); the LEDs run without "
                                                        "commands");
    EXPECT_FALSE(leds.writers());
    ::rmdir(LED_PIPE);
    EXPECT_EQ(next().substr(0, 4), "back");
}

TEST_F(LedServiceTest, TakesThePipeOverWhenTheServiceThatHasItEnds) {
    const board::LedSequencerProfile profile = table("");
    std::optional<board::LedService> leds(std::in_place, profile, false, m_events);
    board::LedPipeKeeper second(m_events, "", 2);
    EXPECT_NE(second.fault().value_or("").find("is in use"), std::string::npos);
    const auto look = [&] { return second.look() || second.look(); }; // every second look tries
    EXPECT_FALSE(look());
    ::unlink(LED_PIPE);
    EXPECT_FALSE(look()) << "the pipe is the other service's to make again";
    EXPECT_EQ(next().substr(0, 4), "gone");
    EXPECT_EQ(next().substr(0, 4), "back");
    EXPECT_FALSE(look());
    leds.reset();
    ASSERT_TRUE(look());
    EXPECT_FALSE(second.fault());
    EXPECT_EQ(next(), "taken over " + second.writers().value_or("nobody"));
    ::unlink(LED_PIPE);
    EXPECT_TRUE(second.look());
    EXPECT_EQ(next().substr(0, 4), "gone");
    EXPECT_EQ(next().substr(0, 4), "back");
}

TEST_F(LedServiceTest, StartsAlthoughOthersHaveLockedItsPipeAndItsLeds) {
    const board::LedSequencerProfile profile = table("");
    ::setenv("XDG_RUNTIME_DIR", m_dir.path("").c_str(), 1); // a folder of this user
    ASSERT_EQ(::mkfifo(LED_PIPE, 0600), 0);
    std::optional<board::FileDescriptor> reader(
        ::open(LED_PIPE, O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    const board::FileDescriptor writer(::open(LED_PIPE, O_WRONLY | O_NONBLOCK | O_CLOEXEC)),
        led(::open(m_dir.path("file").c_str(), O_RDONLY | O_CLOEXEC));
    reader.reset();
    for (const auto* const file : {&writer, &led})
        ASSERT_EQ(::flock(file->number(), LOCK_EX | LOCK_NB), 0);
    const board::LedService leds(profile, false, m_events);
    EXPECT_FALSE(leds.pipeFault());
    EXPECT_THROW(board::LedService(profile, false, m_events), board::LedsInUse);
    ::setenv("XDG_RUNTIME_DIR", "/tmp", 1); // as all these tests have it
}

TEST_F(LedServiceTest, ReportsAndDrivesLedsThatGoAndComeBack) {
    const auto makeFiles = [&] {
        m_dir.write("file", "");
        m_dir.write("dimmable", "");
        m_dir.makePipe("pipe");
    };
    makeFiles();
    const board::LedSequencerProfile profile =
        table("", "[[leds.file]]\nmask = 2\npath = 'dimmable'\non = 255\n"
                  "[[leds.file]]\nmask = 4\npath = 'pipe'\n"
                  "[[leds.file]]\nmask = 3\npath = 'led:late'\n");
    std::optional<board::LedService> leds(std::in_place, profile, true, m_events,
                                          board::DeviceLocator(m_dir.path("sys")));
    std::set<std::string> lit = {"file on", "dimmable on", "pipe on"}, gone;
    EXPECT_EQ(next(), "late gone " + profile.files.back().path.place +
                          ": led:late: there is no LED 'late' (there are: none)");
    EXPECT_EQ(next(3), lit);
    for (const std::string name : {"file", "dimmable", "pipe"}) {
        gone.insert(name + " gone " + m_dir.path(name) +
                    ": can't open for writing: " + "No such file or directory");
        std::filesystem::remove(m_dir.path(name));
        lit.insert(name + " back");
    }
    EXPECT_EQ(next(3), gone);
    m_dir.makeFolder("file");
    EXPECT_EQ(next(),
              "file gone " + m_dir.path("file") + ": can't open for writing: Is a directory");
    std::filesystem::remove(m_dir.path("file"));
    EXPECT_EQ(next().substr(0, 9), "file gone");
    makeFiles();
    m_dir.makeFolder("sys/class/leds/late"); // its driver was not loaded at the start
    m_dir.write("sys/class/leds/late/brightness", "");
    lit.insert({"late back", "late on"});
    EXPECT_EQ(next(8), lit);
    EXPECT_EQ(m_dir.read("dimmable"), "255\n");
    leds.reset();
    expectDescriptors(1);
}

TEST_F(LedServiceTest, TellsKnownFromUnknownLinesAndExplainsTheLeds) {
    const board::LedSequencerProfile profile = table(row("a b", "mask = 2\naction = 'on'"));
    const board::LedService leds(profile, false, m_events);
    for (const char* const line : {"system boot", "no such", "system boot 1"})
        board::sendLedLine(line);
    for (const char* const event : {"line system boot", "unknown no such", "unknown system boot 1"})
        EXPECT_EQ(next(), event);
    EXPECT_EQ(leds.counts().handled, 1U);
    EXPECT_EQ(leds.counts().unknown, 2U);
    while (leds.explain().at(0).driver->run.line.empty()) // the last tick may precede the line
        ::sched_yield();
    const board::LedExplanation led = leds.explain().at(0);
    EXPECT_EQ(led.name + " " + led.driver->words, "file system boot 0");
    EXPECT_TRUE(led.isLit);
}

TEST_F(LedServiceTest, WakesTheHostAtEachChangeOfTheLeds) {
    const board::LedSequencerProfile profile =
        table(row("a b", "mask = 2\naction = 'on'\ngroup = 1"));
    const board::LedService leds(profile, false, m_events);
    leds.wakeAtChanges(true);
    const auto await = [&](std::uint32_t lit) {
        pollfd woken{m_events.descriptor(), POLLIN, 0};
        while (leds.lit() != lit && ::poll(&woken, 1, 60000) == 1)
            static_cast<void>(m_events.take());
        return leds.lit();
    };
    EXPECT_EQ(await(7), 7U);
    board::sendLedLine("a b");
    EXPECT_EQ(await(2), 2U);
}

TEST_F(LedServiceTest, RemembersWhatHoldsWithoutATime) {
    m_dir.write("file", "");
    const std::string memory = m_dir.path("memory"),
                      ready = row("system ready", "mask = 1\naction = 'off'\n"
                                                  "group = 1");
    const board::LedSequencerProfile profile = table(ready), changed = table("");
    TYTime since;
    {
        const board::LedService leds(profile, true, m_events, board::DeviceLocator(), memory);
        EXPECT_EQ(next(), "file on");
        board::sendLedLine("system ready");
        EXPECT_EQ(next(), "line system ready");
        EXPECT_EQ(next(), "file off");
        since = leds.explain().at(0).driver->run.since;
    }
    const std::string kept = m_dir.read("memory");
    {
        m_dir.write("file", "");
        const board::LedService leds(profile, true, m_events, board::DeviceLocator(), memory);
        EXPECT_EQ(next(), "file off") << "not the default row, not even for a tick";
        const board::LedRun run = leds.explain().at(0).driver->run;
        EXPECT_EQ(run.line, "system ready");
        EXPECT_EQ(run.origin, board::LedRun::Origin::REMEMBERED);
        EXPECT_EQ(run.since, since);
    }
    EXPECT_EQ(m_dir.read("memory"), kept);
    {
        const board::LedService leds(changed, false, m_events, board::DeviceLocator(), memory);
        EXPECT_EQ(next(), "fault leds: the line 'system ready' from before the restart is "
                          "dropped: no row of the table matches it any more");
    }
    m_dir.write("memory", "rubbish\n");
    const std::string pipe = m_dir.path("pipe"), start = "; the LEDs start with the default rows";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    for (const auto& [file, fault] :
         {std::pair(memory, ": line 1 is not from the LED service (expected its header, and a "
                            "newline at the end of the file)"),
          {pipe, ": is not a file"}}) {
        const board::LedService leds(profile, false, m_events, board::DeviceLocator(), file);
        EXPECT_EQ(next(), "fault leds: " + file + fault + start);
    }
}
