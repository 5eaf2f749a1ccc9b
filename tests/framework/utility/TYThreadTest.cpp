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
#include "support/LogRecorder.h"
#include "support/TempDir.h"
#include "support/Threads.h"
#include "support/WrittenPipe.h"

using support::openDescriptors;
using support::TempDir;
using support::WrittenPipe;

namespace {

/// Reads the file to its end, in calls that a stop may end. If it is a pipe, waits forever.
void readToEnd(const std::string& path) {
    TYFile file(path.c_str(), true, false);
    XCode status = file.open(O_RDONLY, 0, 0);
    char buffer[8];
    for (unsigned count = 1; status.isSuccess() && count > 0;)
        status = file.readOnce(buffer, sizeof buffer, count, true);
}

/// Only a stop ends this wait: nobody writes to the pipe.
void waitForStop() {
    const TempDir dir;
    dir.makePipe("silent");
    readToEnd(dir.path("silent"));
}

/// A thread that runs `body` and returns `result`.
struct Worker : TYRunnable {
    explicit Worker(std::function<void(TYThread&)> b) : body(std::move(b)) {}
    XCode runThread() override {
        body(thread);
        return result;
    }
    const std::function<void(TYThread&)> body;
    XCode result;
    TYThread thread{"a name of more than fifteen bytes", this}; // destroyed first
};

/// Waits in its destructor, then sets a flag. While the stack is unwound, the wait must return at
/// once and must not stop the thread again: that would end the process.
struct Unwound {
    bool& isUnwound;
    ~Unwound() {
        waitForStop();
        isUnwound = true;
    }
};

} // namespace

TEST(TYThread, EndsWhereItWaitsAndUnwindsItsStack) {
    const TempDir dir;
    const WrittenPipe written(dir);
    const std::pair<const char*, std::function<void()>> waits[] = {
        {"open", waitForStop}, {"read", [&] { readToEnd(written.path()); }}};
    for (const auto& [name, wait] : waits)
        for (const bool isDestroyed : {true, false}) {
            const auto before = openDescriptors();
            bool isUnwound = false;
            std::atomic<int> waiting{0};
            std::optional<Worker> worker(std::in_place, [&, &body = wait](TYThread&) {
                const Unwound mark{isUnwound};
                waiting = ::gettid();
                body();
            });
            ASSERT_TRUE(worker->thread.start("").isSuccess());
            support::waitUntilAsleep(waiting);
            if (isDestroyed)
                worker.reset();
            EXPECT_TRUE(isDestroyed || worker->thread.stop().isSuccess()) << name;
            EXPECT_TRUE(isUnwound) << name;
            EXPECT_TRUE(isDestroyed || worker->thread.join().isSuccess()) << name;
            EXPECT_EQ(openDescriptors(), before) << name;
        }
}

TEST(TYThread, LosesNoDescriptorHoweverTheStopFallsInOpenAndRead) {
    const TempDir dir;
    dir.write("file", "");
    const WrittenPipe written(dir);
    const auto before = openDescriptors();
    for (const std::string& path : {dir.path("file"), written.path()}) {
        Worker worker([&](TYThread&) {
            for (;;)
                readToEnd(path);
        });
        for (int round = 0; round < support::ROUNDS; ++round) {
            ASSERT_TRUE(worker.thread.start("").isSuccess()) << round;
            for (int i = round % 16 ? 0 : round / 16 % 8; i > 0; --i)
                ::sched_yield(); // so that some stops happen later, during the wait itself
            ASSERT_TRUE(worker.thread.stop().isSuccess()) << round;
        }
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST(TYThread, IsNotEndedInTheFrameworksWaitsOfHostCode) {
    // A sink and a message handler that wait while the thread that called them is being stopped.
    struct Sink : support::LogRecorder {
        explicit Sink(std::function<void()> w) : wait(std::move(w)) {}
        void write(const String&, int, const String&) override { wait(); }
        const std::function<void()> wait;
    };
    int finished = 0;
    Worker worker([&](TYThread& self) {
        const auto wait = [&] {
            EXPECT_TRUE(self.stop().isSuccess()); // on the thread itself: only requests the stop
            readToEnd("/dev/null");               // could end the thread
            ++finished;
        };
        const Sink sink(wait);
        EXPECT_TRUE(Mx::publish("waits", [&](const MxMsg&, MxMsg&) {
                        wait();
                        return Mx::withdraw("waits");
                    }).isSuccess());
        RTD::VSYSLOG("TEST", 7, "%s", "waits");
        Mx channel;
        MxMsg reply(0);
        EXPECT_TRUE(channel.connect("waits").isSuccess());
        EXPECT_FALSE(channel.sendReceive(MxMsg(1), reply).isSuccess()) << "not answered";
        waitForStop();
        finished = 0;
    });
    ASSERT_TRUE(worker.thread.start("").isSuccess());
    EXPECT_TRUE(worker.thread.join().isSuccess());
    EXPECT_EQ(finished, 2);
}

TEST(TYThread, ReturnsItsResultOnceItHasEndedAndCanBeStartedAgain) {
    Worker worker([](TYThread&) {});
    worker.result = XCode(7, "SEVEN");
    EXPECT_TRUE(worker.thread.stop().isSuccess()) << "not started";
    EXPECT_EQ(worker.thread.join().getMessage(), String("NO THREAD TO JOIN"));
    EXPECT_EQ(worker.thread.detach().getMessage(), String("NO THREAD TO DETACH"));
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(worker.thread.start("").isSuccess());
        EXPECT_EQ(worker.thread.join().getMessage(), String("SEVEN"));
        EXPECT_EQ(worker.thread.join().getCode(), 7) << "joined again";
        EXPECT_TRUE(worker.thread.stop().isSuccess()) << "already ended";
        EXPECT_EQ(worker.thread.getTid(), 0);
        EXPECT_EQ(worker.thread.getId(), 0U);
    }
    for (int round = 0; round < 3; ++round) { // nobody joins
        ASSERT_TRUE(worker.thread.start("").isSuccess());
        while (worker.thread.isAlive())
            ::sched_yield();
    }
    TYThread empty("empty");
    ASSERT_TRUE(empty.start("").isSuccess());
    EXPECT_EQ(empty.join().getMessage(), String("THREAD HAS NOTHING TO RUN"));
}

TEST(TYThread, JoiningReturnsAfterItsTimeoutAndFailsIfItCouldNeverEnd) {
    std::promise<XCode> joinedItself;
    Worker worker([&](TYThread& self) {
        joinedItself.set_value(self.join());
        waitForStop();
    });
    int policy = -1;
    int priority = -1;
    const String none("NO THREAD RUNS");
    EXPECT_EQ(worker.thread.getSchedulingPolicy(policy, priority).getMessage(), none);
    EXPECT_EQ(worker.thread.setSchedulingPolicy(SCHED_OTHER, 0).getMessage(), none);
    ASSERT_TRUE(worker.thread.start("").isSuccess());
    EXPECT_EQ(joinedItself.get_future().get().getMessage(), String("THREAD CAN'T JOIN ITSELF"));
    EXPECT_EQ(worker.thread.join(1).getMessage(), String("THREAD STILL RUNS"));
    EXPECT_TRUE(worker.thread.getSchedulingPolicy(policy, priority).isSuccess());
    EXPECT_EQ(std::pair(policy, priority), std::pair(SCHED_OTHER, 0));
    EXPECT_EQ(worker.thread.setSchedulingPolicy(SCHED_OTHER, 99).getMessage(),
              String("SET SCHEDULING POLICY: Invalid argument"));
    EXPECT_TRUE(worker.thread.setSchedulingPolicy(SCHED_OTHER, 0).isSuccess());
    EXPECT_EQ(worker.thread.start("").getMessage(), String("THREAD RUNS ALREADY"));
    EXPECT_TRUE(worker.thread.detach().isSuccess());
    EXPECT_EQ(worker.thread.join().getMessage(), String("THREAD IS DETACHED"));
    EXPECT_TRUE(worker.thread.stop().isSuccess());
    EXPECT_FALSE(worker.thread.isAlive());
}

TEST(TYThread, HasItsNameAndItsStackAndBlocksAllSignalsExceptFaults) {
    sigset_t none, inside, after;
    sigemptyset(&none);
    String trace;
    std::string name;
    Worker worker([&](TYThread& self) {
        readToEnd("/dev/null"); // unblocks one signal and must block it again
        pthread_sigmask(SIG_SETMASK, nullptr, &inside);
        std::getline(std::ifstream("/proc/thread-self/comm"), name);
        EXPECT_EQ(self.getTid(), ::gettid());
        EXPECT_EQ(self.getId(), ::pthread_self());
        EXPECT_TRUE(self.getBacktrace(trace).isSuccess());
    });
    pthread_sigmask(SIG_SETMASK, &none, nullptr);
    for (const char* const given : {"", "other"}) {
        ASSERT_TRUE(worker.thread.start(given).isSuccess());
        ASSERT_TRUE(worker.thread.join().isSuccess());
        EXPECT_EQ(name, *given ? given : "a name of more ");
    }
    pthread_sigmask(SIG_SETMASK, nullptr, &after);
    for (const int blocked : {SIGINT, SIGTERM, SIGCHLD, SIGURG, SIGRTMIN})
        EXPECT_EQ(sigismember(&inside, blocked), 1) << blocked;
    for (const int open : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS})
        EXPECT_EQ(sigismember(&inside, open), 0) << open;
    EXPECT_EQ(sigismember(&after, SIGTERM), 0) << "the caller's own mask";
    EXPECT_NE(std::string(trace.c_str()).find('\n'), std::string::npos);
    EXPECT_EQ(worker.thread.getBacktrace(trace).getMessage(),
              String("ONLY A THREAD ITSELF CAN TRACE ITS STACK"));
}
