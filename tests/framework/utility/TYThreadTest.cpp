#include "TYThread.h"

#include <atomic>
#include <csignal>
#include <fstream>
#include <functional>
#include <future>
#include <sched.h>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "Mx.h"
#include "RTD.h"
#include "TYFile.h"
#include "TYRunnable.h"
#include "support/Descriptors.h"
#include "support/TempDir.h"
#include "support/Threads.h"
#include "support/WrittenPipe.h"

using support::openDescriptors;
using support::ROUNDS;
using support::TempDir;
using support::waitUntilAsleep;
using support::WrittenPipe;

namespace {

constexpr unsigned HOUR = 3600U * 1000000U;

class Body : public TYRunnable {
public:
    explicit Body(std::function<XCode()> body) : m_body(std::move(body)) {}
    XCode runThread() override { return m_body(); }

private:
    std::function<XCode()> m_body;
};

/// Waits for an hour in its destructor, then sets a flag. While the stack is unwound the wait must
/// return early, and must not stop the thread again: that would end the process.
struct Unwound {
    std::promise<void>& mark;
    ~Unwound() {
        TYThread::usleep(HOUR);
        mark.set_value();
    }
};

XCode openForEver(const std::string& path) {
    TYFile file(path.c_str(), true, false);
    return file.open(O_RDONLY, 0, 0);
}

XCode readForEver(const std::string& path) {
    TYFile file(path.c_str(), true, false);
    XCode status = file.open(O_RDONLY, 0, 0);
    char buffer[8];
    unsigned count = 0;
    while (status.isSuccess())
        status = file.readOnce(buffer, sizeof buffer, count, true);
    return status;
}

} // namespace

TEST(TYThread, EndsWhereItWaitsAndUnwindsItsStack) {
    const TempDir dir;
    dir.makePipe("silent");
    const WrittenPipe written(dir);
    const struct {
        const char* name;
        std::function<XCode()> wait;
    } CASES[] = {
        {"open", [&] { return openForEver(dir.path("silent")); }},
        {"read", [&] { return readForEver(written.path()); }},
        {"sleep",
         [] {
             TYThread::usleep(HOUR);
             return XCode(XCode::FAILURE);
         }},
    };
    for (const auto& each : CASES) {
        const auto before = openDescriptors();
        std::promise<void> unwound;
        std::atomic<int> waiting{0};
        Body body([&] {
            const Unwound mark{unwound};
            waiting = ::gettid();
            return each.wait();
        });
        TYThread thread("waiting", &body);
        ASSERT_TRUE(thread.start("").isSuccess());
        waitUntilAsleep(waiting);
        EXPECT_TRUE(thread.stop().isSuccess()) << each.name;
        EXPECT_EQ(unwound.get_future().wait_for(std::chrono::seconds(0)), std::future_status::ready)
            << each.name;
        EXPECT_FALSE(thread.isAlive());
        EXPECT_TRUE(thread.join().isSuccess()) << each.name;
        EXPECT_EQ(openDescriptors(), before) << each.name;
    }
}

TEST(TYThread, EndsWithItsObjectAndWhereItWaitsForAWriterThatComes) {
    const TempDir dir;
    dir.makePipe("lonely");
    const auto before = openDescriptors();
    for (int round = 0; round < 200; ++round) {
        std::promise<void> unwound;
        std::atomic<int> waiting{0};
        Body body([&] {
            const Unwound mark{unwound};
            waiting = ::gettid();
            for (;;)
                static_cast<void>(openForEver(dir.path("lonely")));
            return XCode();
        });
        int writer = -1;
        {
            TYThread thread("destroyed", &body);
            ASSERT_TRUE(thread.start("").isSuccess());
            waitUntilAsleep(waiting);
            writer = ::open(dir.path("lonely").c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
        }
        EXPECT_EQ(unwound.get_future().wait_for(std::chrono::seconds(0)),
                  std::future_status::ready);
        if (writer >= 0)
            ::close(writer);
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST(TYThread, LosesNoDescriptorHoweverTheStopFallsInOpenAndRead) {
    const TempDir dir;
    dir.write("file", "");
    const WrittenPipe written(dir);
    const std::function<XCode()> bodies[] = {[&] {
                                                 for (;;)
                                                     static_cast<void>(
                                                         openForEver(dir.path("file")));
                                                 return XCode();
                                             },
                                             [&] { return readForEver(written.path()); }};
    const auto before = openDescriptors();
    for (const auto& each : bodies) {
        Body body(each);
        TYThread thread("rounds", &body);
        for (int round = 0; round < ROUNDS; ++round) {
            ASSERT_TRUE(thread.start("").isSuccess()) << round;
            for (int i = round % 16 ? 0 : round / 16 % 8; i > 0; --i)
                ::sched_yield(); // so that some stops happen later, during the wait itself
            ASSERT_TRUE(thread.stop().isSuccess()) << round;
        }
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST(TYThread, FinishesACallIntoHostCodeBeforeItEnds) {
    const TempDir dir;
    const WrittenPipe written(dir);
    std::atomic<int> inHostCode{0}, stopping{0};
    bool interrupted = false;
    bool finished = false;
    Body body([&] {
        TYThread::usleep(1); // must block the signal again
        inHostCode = ::gettid();
        // The host's own wait, which the framework must not interrupt.
        const int own = ::open(written.path().c_str(), O_RDONLY | O_CLOEXEC);
        char byte;
        interrupted = ::read(own, &byte, 1) != 1;
        ::close(own);
        finished = true;
        TYThread::usleep(HOUR);
        return XCode();
    });
    TYThread thread("host code", &body);
    ASSERT_TRUE(thread.start("").isSuccess());
    waitUntilAsleep(inHostCode);
    auto stopped = std::async(std::launch::async, [&] {
        stopping = ::gettid();
        return thread.stop().isSuccess();
    });
    waitUntilAsleep(stopping); // now the stop is pending
    written.write("x");
    EXPECT_TRUE(stopped.get());
    EXPECT_TRUE(finished);
    EXPECT_FALSE(interrupted);
}

TEST(TYThread, IsNotEndedInTheFrameworksWaitsOfHostCode) {
    // A sink and a message handler that wait while the thread that called them is being stopped.
    const TempDir dir;
    const WrittenPipe written(dir);
    TYThread* self = nullptr;
    int finished = 0;
    const auto wait = [&] {
        EXPECT_TRUE(self->stop().isSuccess()); // on the thread itself: only requests the stop
        TYThread::usleep(1);
        TYFile file(written.path().c_str(), true, false);
        EXPECT_TRUE(file.open(0, 0, 0).isSuccess());
        ++finished;
    };
    struct Sink : RTD::LogSink {
        explicit Sink(std::function<void()> w)
            : wait(std::move(w)), former(RTD::SET_LOG_SINK(this)) {}
        ~Sink() override { RTD::SET_LOG_SINK(former); }
        void write(const String&, int, const String&) override { wait(); }
        const std::function<void()> wait;
        RTD::LogSink* const former;
    } const sink(wait);
    ASSERT_TRUE(Mx::publish("waits", [&](const MxMsg&, MxMsg&) {
                    wait();
                    return XCode();
                }).isSuccess());

    Body body([&] {
        RTD::VSYSLOG("TEST", 7, "%s", "waits");
        Mx channel;
        MxMsg reply(0);
        EXPECT_TRUE(channel.connect("waits").isSuccess());
        EXPECT_FALSE(channel.sendReceive(MxMsg(1), reply).isSuccess()); // not answered
        TYThread::usleep(HOUR);
        finished = 0;
        return XCode();
    });
    TYThread thread("host code", &body);
    self = &thread;
    ASSERT_TRUE(thread.start("").isSuccess());
    EXPECT_TRUE(thread.join().isSuccess());
    EXPECT_EQ(finished, 2);
    EXPECT_TRUE(Mx::withdraw("waits").isSuccess());
}

TEST(TYThread, StoppingIsHarmlessBeforeStartTwiceAndOnTheThreadItself) {
    TYThread* self = nullptr;
    bool wentOn = false;
    Body body([&] {
        EXPECT_TRUE(self->stop().isSuccess());
        wentOn = true;
        TYThread::usleep(HOUR);
        wentOn = false;
        return XCode(XCode::FAILURE);
    });
    TYThread thread("itself", &body);
    self = &thread;
    EXPECT_TRUE(thread.stop().isSuccess());
    for (int round = 0; round < 3; ++round) {
        ASSERT_TRUE(thread.start("").isSuccess());
        EXPECT_TRUE(thread.join().isSuccess());
        EXPECT_TRUE(wentOn);
        EXPECT_TRUE(thread.stop().isSuccess());
        EXPECT_TRUE(thread.stop().isSuccess());
    }
}

TEST(TYThread, GivesItsResultOnceItHasEndedAndCanBeStartedAgain) {
    Body body([] { return XCode(7, "SEVEN"); });
    TYThread thread("result", &body);
    EXPECT_FALSE(thread.join().isSuccess());
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(thread.start("").isSuccess());
        const XCode result = thread.join();
        EXPECT_EQ(result.getCode(), 7);
        EXPECT_EQ(result.getMessage(), String("SEVEN"));
        EXPECT_EQ(thread.getTid(), 0);
    }
    for (int round = 0; round < 3; ++round) { // nobody joins
        ASSERT_TRUE(thread.start("").isSuccess());
        while (thread.isAlive())
            ::sched_yield();
    }
    TYThread empty("empty");
    ASSERT_TRUE(empty.start("").isSuccess());
    EXPECT_FALSE(empty.join().isSuccess());
}

TEST(TYThread, JoiningGivesUpInTimeAndFailsWhereItNeverCould) {
    TYThread* self = nullptr;
    XCode joinedItself;
    std::promise<void> tried;
    Body body([&] {
        joinedItself = self->join();
        tried.set_value();
        TYThread::usleep(HOUR);
        return XCode();
    });
    TYThread thread("joined", &body);
    self = &thread;
    ASSERT_TRUE(thread.start("").isSuccess());
    tried.get_future().wait();
    EXPECT_FALSE(joinedItself.isSuccess());
    EXPECT_FALSE(thread.join(1).isSuccess());
    int policy = -1;
    int priority = -1;
    EXPECT_TRUE(thread.getSchedulingPolicy(policy, priority).isSuccess());
    EXPECT_EQ(std::pair(policy, priority), std::pair(SCHED_OTHER, 0));
    EXPECT_FALSE(thread.setSchedulingPolicy(SCHED_OTHER, 99).isSuccess()) << "no such priority";
    EXPECT_FALSE(thread.start("").isSuccess()) << "one runs already";
    EXPECT_TRUE(thread.detach().isSuccess());
    EXPECT_FALSE(thread.join().isSuccess());
    EXPECT_TRUE(thread.stop().isSuccess());
    EXPECT_FALSE(thread.isAlive());
}

TEST(TYThread, BlocksSignalsButThoseOfFaults) {
    sigset_t inside;
    sigset_t before, after;
    Body body([&] {
        TYThread::usleep(1); // lets one signal in and must block it again
        pthread_sigmask(SIG_SETMASK, nullptr, &inside);
        return XCode();
    });
    TYThread thread("signals", &body);
    pthread_sigmask(SIG_SETMASK, nullptr, &before);
    ASSERT_TRUE(thread.start("").isSuccess());
    ASSERT_TRUE(thread.join().isSuccess());
    pthread_sigmask(SIG_SETMASK, nullptr, &after);
    for (const int blocked : {SIGINT, SIGTERM, SIGHUP, SIGCHLD, SIGUSR1, SIGURG, SIGRTMIN})
        EXPECT_EQ(sigismember(&inside, blocked), 1) << blocked;
    for (const int open : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT})
        EXPECT_EQ(sigismember(&inside, open), 0) << open;
    EXPECT_EQ(sigismember(&after, SIGTERM), sigismember(&before, SIGTERM));
}

TEST(TYThread, ShowsItsNameItsStackAndItsScheduling) {
    TYThread* self = nullptr;
    String trace;
    std::string name;
    Body body([&] {
        std::getline(std::ifstream("/proc/thread-self/comm"), name);
        return self->getBacktrace(trace);
    });
    TYThread thread("a name of more than fifteen bytes", &body);
    self = &thread;
    int policy = -1;
    int priority = -1;
    EXPECT_FALSE(thread.getSchedulingPolicy(policy, priority).isSuccess());
    ASSERT_TRUE(thread.start("").isSuccess());
    EXPECT_TRUE(thread.join().isSuccess());
    EXPECT_EQ(name, "a name of more ");
    EXPECT_FALSE(trace.isEmpty());
    EXPECT_FALSE(thread.getBacktrace(trace).isSuccess());
    ASSERT_TRUE(thread.start("other").isSuccess());
    EXPECT_TRUE(thread.join().isSuccess());
    EXPECT_EQ(name, "other");
}
