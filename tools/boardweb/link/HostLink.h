#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "client/StatusClient.h"
#include "feed/EventFeed.h"
#include "feed/History.h"
#include "link/HostPlace.h"
#include "link/Questions.h"
#include "link/Waits.h"

namespace boardweb {

/// The connection to the host. If there is no host, looks for one until it finds one. Asks the host
/// for its status in each period of the history and after each event of the board, and passes on
/// the questions of clients. The replies go to the feed, the history and the clients. Runs on the
/// program's main thread.
class HostLink {
public:
    /// All references must outlive the object.
    HostLink(HostPlace place, Waits& waits, EventFeed& feed, History& history,
             Questions& questions);

    /// Returns when the program is asked to end.
    void run();

private:
    using Clock = Waits::Clock;
    using Json = nlohmann::ordered_json;

    /// One connection for each purpose, because a connection that receives events allows no calls.
    struct Connections {
        board::StatusClient calls;
        board::StatusClient events;
        std::optional<board::StatusClient> leds; ///< empty unless somebody reads the feed
        bool mayHaveLeds = true;
        Clock::time_point nextLeds{}; ///< when to connect for the LEDs again
    };

    void connect();
    std::unique_ptr<Connections> connections() const;
    void logChange(bool isThere, const std::string& text);
    void publishHost(const std::string& fault);
    void lose(const std::string& fault);

    /// Calls `work` if there is a host. If `work` throws Error, the host counts as lost.
    template <class Work>
    void withHost(Work work);

    bool takeEvents();
    void tick();
    void askStatus();
    void answerQuestion(Question question);
    Answer answerTo(Question question);
    bool followLeds();
    void dropLeds();
    void readLeds(bool& mayHaveMore);
    void waitForMore(bool mayHaveMore);

    const HostPlace m_place;
    Waits& m_waits;
    EventFeed& m_feed;
    History& m_history;
    Questions& m_questions;
    const board::StatusClient::Wait m_wait;
    std::unique_ptr<Connections> m_host; ///< null while there is no host
    std::string m_fault;                 ///< why there is no host
    std::string m_since;                 ///< when the host was found or lost
    std::optional<bool> m_isLoggedAs;    ///< whether the last log line reports a host
    Clock::time_point m_nextTry, m_nextTick;
    Clock::time_point m_connected{}; ///< when the host was last found
    std::chrono::milliseconds m_pause;
    bool m_isStatusDue = false;
    Json m_status; ///< the last status; null if there is no host
};

} // namespace boardweb
