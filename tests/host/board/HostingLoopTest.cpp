#include "board/HostingLoop.h"

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "RTD.h"
#include "base/File.h"

using board::HostingLoop;
using namespace std::chrono_literals;

namespace {

/// Plays a script, one step for each wait of the loop, and records what the loop does.
class Script : public HostingLoop::Waiter, public HostingLoop::Listener {
public:
    struct Step {
        std::chrono::seconds until;   ///< when the wait returns
        std::function<void()> action; ///< what happens during the wait
        bool isAskedToStop = false;
    };

    void play(std::vector<Step> steps) { m_steps = std::move(steps); }
    HostingLoop::Clock::time_point at(std::chrono::seconds second) const {
        return HostingLoop::Clock::time_point(second);
    }

    HostingLoop::Clock::time_point now() override { return m_now; }
    bool waitUntil(std::optional<HostingLoop::Clock::time_point> end, int) override {
        if (m_next == m_steps.size())
            throw std::logic_error("the loop waits longer than the script");
        const Step& step = m_steps[m_next++];
        m_now = at(step.until);
        waits.push_back(
            end ? std::chrono::duration_cast<std::chrono::seconds>(end->time_since_epoch()) : -1s);
        if (step.action)
            step.action();
        return step.isAskedToStop;
    }

    void onEvents(const board::EventQueue::Batch& batch) override {
        for (const auto& entry : batch.entries) {
            if (const auto* const fault = std::get_if<board::event::FaultReport>(&entry.event))
                note("fault " + fault->text);
            else
                note("event " + std::to_string(entry.event.index()));
        }
    }
    void onRoundEnd() override { ++rounds; }
    bool isListening() const override { return isHere; }

    void note(const std::string& what) {
        const auto seconds =
            std::chrono::duration_cast<std::chrono::seconds>(m_now.time_since_epoch());
        notes.push_back(std::to_string(seconds.count()) + " " + what);
    }

    std::vector<std::string> notes;
    std::vector<std::chrono::seconds> waits; ///< the ends of the waits that the loop asked for
    unsigned rounds = 0;
    bool isHere = true;

private:
    std::vector<Step> m_steps;
    std::size_t m_next = 0;
    HostingLoop::Clock::time_point m_now;
};

using Notes = std::vector<std::string>;
using Seconds = std::vector<std::chrono::seconds>;

} // namespace

TEST(HostingLoop, PassesEventsOnAndDoesWhatIsDueInTime) {
    Script script;
    HostingLoop loop(script, script);
    loop.every(5s, [&] {
        script.note("look");
        loop.events().push(board::event::ButtonReleased{}); // is passed on in the same round
    });
    loop.every(9s, [&] { script.note("cpu"); });
    script.play({{2s,
                  [&] {
                      loop.events().push(board::event::ButtonPressed{});
                      RTD::VSYSLOG("TEST", 3, "broken");
                  }},
                 {5s, nullptr},
                 {17s, nullptr}, // late by more than a period
                 {18s, nullptr},
                 {20s, nullptr},
                 {23s, nullptr}});
    EXPECT_FALSE(loop.runUntil(script.at(23s)));
    EXPECT_EQ(script.notes, (Notes{"2 event 0", "2 fault broken", "5 look", "5 event 1", "17 look",
                                   "17 cpu", "17 event 1", "18 cpu", "20 look", "20 event 1"}));
    EXPECT_EQ(script.waits, (Seconds{5s, 5s, 9s, 18s, 20s, 23s}));
}

TEST(HostingLoop, ServesDescriptorsThatOthersAdd) {
    Script script;
    HostingLoop loop(script, script);
    board::FileDescriptor readEnd, writeEnd;
    ASSERT_TRUE(board::tryMakePipe(readEnd, writeEnd));
    loop.poller().add(readEnd.number(), [&] {
        char bytes[8];
        script.note("read " + std::to_string(board::tryRead(readEnd, bytes, sizeof bytes)));
    });
    const auto write = [&] { board::tryWriteAll(writeEnd, "abc"); };
    script.play({{1s, nullptr}, {2s, write}, {3s, nullptr, true}});
    EXPECT_TRUE(loop.runUntil(std::nullopt));
    EXPECT_EQ(script.notes, Notes{"2 read 3"});
    EXPECT_EQ(script.waits, (Seconds{-1s, -1s, -1s})) << "nothing is due";
}

TEST(HostingLoop, PassesOnWhatCameBeforeItIsStopped) {
    Script script;
    HostingLoop loop(script, script);
    script.play({{1s, [&] { loop.events().push(board::event::ButtonPressed{}); }, true}});
    EXPECT_TRUE(loop.runUntil(std::nullopt));
    EXPECT_EQ(script.notes, Notes{"1 event 0"});
    EXPECT_EQ(script.rounds, 1U);
}

TEST(HostingLoop, EndsWhenNobodyListens) {
    Script script;
    HostingLoop loop(script, script);
    script.play({{1s, [&] { script.isHere = false; }}});
    EXPECT_TRUE(loop.runUntil(script.at(1s))) << "the end of the listener counts as the end";
    EXPECT_TRUE(loop.runUntil(std::nullopt)); // the script has no step left, so no wait is possible
    EXPECT_EQ(script.rounds, 1U);
}
