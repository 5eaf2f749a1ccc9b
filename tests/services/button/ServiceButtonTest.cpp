#include "ServiceButton.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

#include <fcntl.h>
#include <unistd.h>

#include "RTD.h"
#include "support/DriverFixtures.h"
#include "support/TempDir.h"

namespace {

using namespace support;

std::uint64_t nanos(const TYTime& time) {
    EXPECT_LT(time.nanoseconds, 1000000000U);
    return time.seconds * std::uint64_t{1000000000} + time.nanoseconds;
}

std::uint64_t clockNow() {
    TYTime time;
    EXPECT_TRUE(time.getSystemClock(TYTime::SYSTEM_CLOCK).isSuccess());
    return nanos(time);
}

/// Observer and event monitor in one: what they are told, in order, to be awaited one by one.
class ServiceButtonTest : public testing::Test, public ServiceButton::Observer, public RTD::Monitor {
protected:
    ServiceButtonTest() { MON_EVENT = this; }
    ~ServiceButtonTest() override { MON_EVENT = nullptr; }

    void onButtonPressed(const TYTime& time) override { add("pressed", time); }
    void onButtonReleased(const TYTime& time) override { add("released", time); }
    void report(int level, const String& text) override { add(std::to_string(level) + " " + str(text), {}); }

    void add(const std::string& event, const TYTime& time) {
        if (inHostCode)
            inHostCode();
        const std::lock_guard<std::mutex> hold(mutex);
        lastTime = nanos(time);
        events.push_back(event);
        changed.notify_all();
    }

    std::string next() {
        std::unique_lock<std::mutex> hold(mutex);
        changed.wait(hold, [&] { return !events.empty(); });
        std::string event = events.front();
        events.pop_front();
        return event;
    }

    /// A writer keeps a pipe's messages while nobody has it open for reading.
    int openPipe(int flags) const { return ::open(path.c_str(), flags | O_CLOEXEC); }

    TempDir dir;
    const std::string path = dir.path("button");
    std::function<void()> inHostCode;
    std::mutex mutex; // guards what follows
    std::condition_variable changed;
    std::deque<std::string> events;
    std::uint64_t lastTime = 0;
    String error = "as it was";
};

} // namespace

TEST_F(ServiceButtonTest, TellsOfEachMessageOfThePipeAndCutsLongOnes) {
    dir.makePipe("button");
    ServiceButton button(path.c_str(), this);
    ASSERT_TRUE(button.start(error).isSuccess());
    EXPECT_EQ(error, "as it was");
    ::close(openPipe(O_WRONLY)); // without a word
    EXPECT_EQ(next(), "3 INVALID SRV-BUTTON MESSAGE: ");

    const int pipe = openPipe(O_RDWR);
    const std::string cut(63, 'x');
    const std::vector<std::pair<std::string, std::vector<std::string>>> CASES = {
        {"pressed\n", {"pressed"}},
        {"pressedly", {"pressed"}},
        {"released, at last\n", {"released"}},
        {" pressed", {"3 INVALID SRV-BUTTON MESSAGE:  pressed"}},
        {"release", {"3 INVALID SRV-BUTTON MESSAGE: release"}},
        {cut + "more", {"3 INVALID SRV-BUTTON MESSAGE: " + cut, "3 INVALID SRV-BUTTON MESSAGE: more"}},
        {std::string("no\0end", 6), {"3 INVALID SRV-BUTTON MESSAGE: no"}},
    };
    for (const auto& [message, told] : CASES) {
        ASSERT_EQ(::write(pipe, message.data(), message.size()), static_cast<ssize_t>(message.size()));
        for (const std::string& each : told)
            EXPECT_EQ(next(), each);
    }
    EXPECT_FALSE(button.start(error).isSuccess());
    EXPECT_EQ(error, "START THREAD FAILED") << "one runs already";
    ::close(pipe);
}

TEST_F(ServiceButtonTest, MeasuresFromTheLastPress) {
    ServiceButton button(path.c_str(), this);
    std::uint64_t pressedAt = 0;
    for (const char* message : {"released", "pressed", "released", "released", "pressed", "released"}) {
        const auto before = clockNow();
        button.processButtonMessage(message);
        const auto after = clockNow();
        const bool pressed = next() == "pressed";
        const auto at = pressed ? lastTime : pressedAt + lastTime;
        EXPECT_LE(before, at) << message;
        EXPECT_GE(after, at) << message;
        if (pressed)
            pressedAt = lastTime;
    }
}

TEST_F(ServiceButtonTest, ReportsAMissingObserverWhereThereIsAMonitor) {
    ServiceButton button(path.c_str(), nullptr);
    for (const char* message : {"pressed", "released", "else"}) {
        button.processButtonMessage(message);
        EXPECT_EQ(next(), "3 NO SRV-BUTTON OBSERVER") << message;
    }
    MON_EVENT = nullptr;
    button.processButtonMessage("pressed");
    EXPECT_FALSE(button.runThread().isSuccess());
    EXPECT_TRUE(events.empty());
}

TEST_F(ServiceButtonTest, AFileErrorEndsTheThreadWithOneReport) {
    ServiceButton button(path.c_str(), this);
    const auto before = openDescriptors();
    for (const char* failed : {"OPEN", "READ FROM"}) {
        const XCode status = button.runThread();
        EXPECT_EQ(status.getCode(), XCode::FAILURE);
        EXPECT_FALSE(status.getMessage().isEmpty()) << "the file's own status";
        ASSERT_TRUE(button.start(error).isSuccess());
        for (int i = 0; i < 2; ++i)
            EXPECT_EQ(next(), std::string("3 FAILED TO ") + failed + " BUTTON FILE: " + path);
        EXPECT_TRUE(button.stop().isSuccess());
        EXPECT_TRUE(events.empty());
        dir.makeFolder("button"); // can be opened but not read
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(ServiceButtonTest, AStopInOpenOrReadReportsNothingAndLosesNoDescriptor) {
    dir.makePipe("button");
    ServiceButton button(path.c_str(), this);
    EXPECT_TRUE(button.stop().isSuccess()) << "before start";
    int pipe = -1;
    for (int half = 0; half < 2; ++half) {
        const auto before = openDescriptors();
        for (int round = 0; round < 500; ++round) {
            ASSERT_TRUE(button.start(error).isSuccess()) << round;
            ASSERT_TRUE(button.stop().isSuccess()) << round;
        }
        EXPECT_TRUE(button.stop().isSuccess()) << "twice";
        EXPECT_EQ(openDescriptors(), before);
        if (half == 0)
            pipe = openPipe(O_RDWR); // from here on opening the pipe does not wait, reading does
    }
    ::close(pipe);
    EXPECT_TRUE(events.empty());
}

TEST_F(ServiceButtonTest, AStopLetsObserverAndMonitorFinish) {
    dir.makePipe("button");
    const int pipe = openPipe(O_RDWR);
    ServiceButton button(path.c_str(), this);
    inHostCode = [&] {
        EXPECT_TRUE(button.stop().isSuccess()); // on the button's thread: only marks
        TYThread::usleep(1);                    // where it would end
    };
    for (const auto& [message, told] : std::vector<std::pair<std::string, std::string>>{
             {"pressed", "pressed"}, {"released", "released"}, {"x", "3 INVALID SRV-BUTTON MESSAGE: x"}}) {
        ASSERT_TRUE(button.start(error).isSuccess());
        ASSERT_EQ(::write(pipe, message.data(), message.size()), static_cast<ssize_t>(message.size()));
        EXPECT_EQ(next(), told);
        EXPECT_TRUE(button.stop().isSuccess());
    }
    ::close(pipe);
}
