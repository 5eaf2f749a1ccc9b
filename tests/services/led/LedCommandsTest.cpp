#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>

#include <fcntl.h>
#include <sched.h>
#include <sys/stat.h>
#include <unistd.h>

#include "services/led/Sequencer.h"
#include "support/Descriptors.h"
#include "support/Threads.h"

using namespace sequencer;

namespace {

constexpr char PIPE[] = "/tmp/evt.fifo";

/// Writes any bytes into the service's pipe at once, as a client would.
void writeToPipe(const std::string& bytes) {
    const int pipe = ::open(PIPE, O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(pipe, 0);
    EXPECT_EQ(::write(pipe, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    ::close(pipe);
}

// Does not use SetUp: before that runs, a derived fixture has started a thread that makes the pipe.
struct LedPipe : testing::Test {
    LedPipe() { ::unlink(PIPE); }
    ~LedPipe() override { ::unlink(PIPE); }
};

/// A service without LEDs. `actInTick` suspends its updates and calls `act` once on its thread, in
/// the middle of a tick: when the service logs that it skips the update.
class LedThread : public LedPipe, public LogRecorder {
protected:
    void write(const String& category, int level, const String& text) override {
        if (text == "Skipping LED Update!" && m_isArmed.exchange(false))
            m_act();
        LogRecorder::write(category, level, text);
    }
    void actInTick(std::function<void()> act) {
        m_act = std::move(act);
        leds->m_suspended = true;
        m_isArmed = true;
        while (m_isArmed)
            ::sched_yield();
    }

private:
    std::function<void()> m_act;
    std::atomic<bool> m_isArmed{false};

protected:
    LedCtrl* const leds = new LedCtrl(nullptr, 0, nullptr, 0, LedCtrl::ACCESS_NONE, 1, 0);
};

} // namespace

TEST_F(LedPipe, ReadsAtMost80BytesPerTickAndAcceptsAnyByte) {
    const std::vector<Row> rows = {row(ON, 1)};
    Sequencer leds(rows);
    LogRecorder log;
    const mode_t mask = ::umask(0);
    leds.setupFifo();
    ::umask(mask);
    struct stat status {};
    EXPECT_EQ(::stat(PIPE, &status), 0);
    EXPECT_EQ(status.st_mode, S_IFIFO | 0666U) << "anybody may send commands";
    writeToPipe("early x\n");
    leds.testFifo(); // drops that line together with its own text
    EXPECT_EQ(log.take(), Lines{"DB_FRAMEWORK 3: test fifo error"});
    const std::string longest(80, 'e');
    const struct {
        std::string written;
        Lines logged; ///< in the tick after that
    } TICKS[] = {
        {"w x\r\n\nc d 2\n",
         {"LED Command: w x\r", "Found LED command at index 0", "LED Command: c d 2"}},
        {longest + "rest", {"LED Command: " + longest}},
        {"", {"LED Command: rest"}},
        {std::string("c d\0 2\na b 1\n", 13), {"LED Command: c d"}},
        {"\xFF\x80 \x1B[2J\n%s%n %d\n", {"LED Command: \xFF\x80 \x1B[2J", "LED Command: %s%n %d"}},
        {"", {}}, // the writer is gone: no data, but no end of file either
    };
    for (const auto& each : TICKS) {
        writeToPipe(each.written);
        leds.readCmd();
        std::string expected, logged;
        for (const std::string& line : each.logged)
            expected += "DB_FRAMEWORK 7: " + line + "\n";
        for (const std::string& line : log.take())
            logged += line + "\n";
        EXPECT_EQ(logged, expected);
    }
    leds.shutdown();
    const int next = ::open("/dev/null", O_RDONLY | O_CLOEXEC); // gets the pipe's number
    leds.shutdown();
    EXPECT_EQ(::close(next), 0) << "not the service's to close";
}

TEST_F(LedPipe, WritesNothingIntoAnythingElseInItsPlace) {
    const TempDir dir;
    dir.write("file", "image");
    const std::string linked = "DB_FRAMEWORK 3: error open: Too many levels of symbolic links",
                      untested = "DB_FRAMEWORK 3: error open - test fifo: ";
    for (const bool isLink : {true, false}) {
        if (isLink)
            std::filesystem::create_symlink(dir.path("file"), PIPE);
        else
            std::filesystem::copy_file(dir.path("file"), PIPE);
        Sequencer leds({});
        LogRecorder log;
        leds.setupFifo();
        leds.testFifo();
        EXPECT_EQ(log.take(), isLink ? Lines({linked, untested}) : Lines({untested}));
        leds.shutdown();
        std::ifstream file(PIPE);
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), "image");
        ::unlink(PIPE);
    }
}

TEST_F(LedPipe, RunsByItselfUntilItIsReleased) {
    const TempDir dir;
    dir.write("led", "");
    const std::string path = dir.path("led");
    const LedCtrl::FileNameMap file = {1, path.c_str()};
    const Row commands[] = {row(ON, 1, 0, 0, true), row(OFF, 1, 0, 0, false, "off")};
    const auto waitFor = [&](const char* shown) {
        while (dir.read("led").find(shown) == std::string::npos)
            ::sched_yield();
    };
    const auto before = support::openDescriptors();
    auto* const leds = new LedCtrl(commands, 2, &file, 1, LedCtrl::ACCESS_FILES, 1, 0);
    waitFor("111");
    EXPECT_EQ(dir.read("led").find('0'), std::string::npos) << "the default row";
    writeToPipe("off x\n");
    waitFor("0");
    EXPECT_TRUE(leds->stop().isSuccess());
    dir.write("led", "");
    EXPECT_TRUE(leds->start(String::EMPTY()).isSuccess());
    waitFor("1");
    leds->release();
    constexpr int ROUNDS = 300;
    for (unsigned round = 0; round < ROUNDS; ++round)
        (new LedCtrl(commands, 2, &file, 1, LedCtrl::ACCESS_FILES, 1 + round % 3, 0))->release();
    EXPECT_EQ(support::openDescriptors(), before + 2 + ROUNDS)
        << "each start leaves the pipe's writer, however briefly it ran";
}

TEST_F(LedPipe, EndsAtOnceHoweverLongItsTickIs) {
    constexpr unsigned HOUR_MS = 3600U * 1000U;
    LedCtrl leds(nullptr, 0, nullptr, 0, LedCtrl::ACCESS_NONE, HOUR_MS, 0);
    support::waitUntilAsleep(std::atomic<int>(leds.getTid()));
    EXPECT_TRUE(leds.stop().isSuccess());
    EXPECT_TRUE(leds.start(String::EMPTY()).isSuccess());
    support::waitUntilAsleep(std::atomic<int>(leds.getTid())); // the destructor ends it
}

TEST_F(LedThread, EndsBeforeAnyMemberIsDestroyed) {
    std::atomic<int> owner{0};
    bool isWhole = false;
    actInTick([&] {
        support::waitUntilAsleep(owner); // in the destructor, which waits for this tick
        isWhole = dynamic_cast<LedCtrl*>(static_cast<TYThread*>(leds)) != nullptr;
    });
    owner = ::gettid();
    delete leds;
    EXPECT_TRUE(isWhole);
}

TEST_F(LedThread, RejectsItsOwnShutdown) {
    std::atomic<bool> isDone{false};
    actInTick([&] {
        leds->shutdown();
        leds->release();
        isDone = true;
    });
    while (!isDone)
        ::sched_yield();
    leds->release();
    Lines lines = take();
    lines.erase(std::remove(lines.begin(), lines.end(), "DB_FRAMEWORK 7: Skipping LED Update!"),
                lines.end());
    const std::string rejected = "DB_FRAMEWORK 3: LED control can't be shut down on its own thread";
    EXPECT_EQ(lines, (Lines{rejected, rejected, "DB_FRAMEWORK 7: Shutting down LED Control..."}));
}
