#include "link/HostLink.h"

#include <algorithm>
#include <utility>

#include "Log.h"
#include "base/Events.h"
#include "client/UtcText.h"

using board::StatusClient;
using std::chrono::milliseconds;

namespace boardweb {

namespace {

constexpr milliseconds FIRST_PAUSE{250}, LONGEST_PAUSE{2000};

/// If a host has lasted this long, the first pause after its loss is short again. If a host has
/// refused to report the LEDs, this is the pause before the next attempt.
constexpr std::chrono::seconds LASTING{10};

/// A fault from the host is cut to this length.
constexpr std::size_t LONGEST_FAULT = 500;
constexpr char NO_METHOD[] = "org.varlink.service.MethodNotFound";

/// How many messages are handled before other work gets its turn.
constexpr int MOST_AT_ONCE = 64;

std::string textOf(const nlohmann::ordered_json& value) {
    return value.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

std::string cut(const std::string& fault) {
    return fault.size() <= LONGEST_FAULT ? fault : fault.substr(0, LONGEST_FAULT) + "...";
}

Answer failure(const std::string& why) {
    return {false, std::make_shared<const std::string>(textOf({{"error", cut(why)}}))};
}

const char* methodOf(Question question) {
    switch (question) {
    case Question::STATUS:
        return "Status";
    case Question::LEDS:
        return "Leds";
    case Question::DESCRIPTOR:
        return "Descriptor";
    case Question::METRICS:
        return "Metrics";
    }
    return "Status";
}

} // namespace

HostLink::HostLink(HostPlace place, Waits& waits, EventFeed& feed, History& history,
                   Questions& questions)
    : m_place(std::move(place)), m_waits(waits), m_feed(feed), m_history(history),
      m_questions(questions),
      m_wait([&waits](auto end, int descriptor) { return waits.until(end, descriptor); }),
      m_nextTry(Clock::now()), m_nextTick(m_nextTry), m_pause(FIRST_PAUSE) {
    publishHost("the host has not been asked yet");
}

void HostLink::run() {
    while (!Waits::isAsked()) {
        if (!m_host && Clock::now() >= m_nextTry)
            connect();
        bool mayHaveMore = takeEvents();
        mayHaveMore = followLeds() || mayHaveMore;
        if (m_isStatusDue)
            askStatus();
        if (Clock::now() >= m_nextTick)
            tick();
        if (const auto question = m_questions.take()) {
            answerQuestion(*question);
            mayHaveMore = true;
        }
        waitForMore(mayHaveMore);
    }
}

void HostLink::waitForMore(bool mayHaveMore) {
    std::vector<int> descriptors;
    Clock::time_point end = m_nextTick;
    if (!m_host) {
        end = std::min(end, m_nextTry);
    } else {
        descriptors.push_back(m_host->events.descriptor());
        if (m_host->leds)
            descriptors.push_back(m_host->leds->descriptor());
    }
    m_waits.untilAny(mayHaveMore ? Clock::now() : end, descriptors);
}

template <class Work>
void HostLink::withHost(Work work) {
    if (!m_host)
        return;
    try {
        work();
    } catch (const board::Error& error) {
        lose(cut(error.what()));
    }
}

std::unique_ptr<HostLink::Connections> HostLink::connections() const {
    StatusClient calls = connectTo(m_place, m_wait);
    StatusClient events(calls.path(), m_wait, LIMITS);
    events.monitor();
    return std::unique_ptr<Connections>(
        new Connections{std::move(calls), std::move(events), std::nullopt, true, {}});
}

void HostLink::connect() {
    try {
        m_host = connections();
        m_isStatusDue = true;
        m_connected = Clock::now();
        logChange(true, m_host->calls.path());
        publishHost("");
    } catch (const board::Error& error) {
        lose(cut(error.what()));
    }
}

void HostLink::lose(const std::string& fault) {
    if (Waits::isAsked()) // the wait was ended, which is not the host's fault
        return;
    const bool hadHost = m_host != nullptr;
    m_host.reset();
    m_status = nullptr;
    m_isStatusDue = false;
    m_feed.forget(EventFeed::STATUS);
    m_feed.forget(EventFeed::LEDS);
    const auto now = Clock::now();
    if (hadHost && now - m_connected >= LASTING)
        m_pause = FIRST_PAUSE;
    m_nextTry = now + m_pause;
    m_pause = std::min(2 * m_pause, LONGEST_PAUSE);
    logChange(false, fault);
    publishHost(fault);
}

/// Logs that a host was found or lost, if that is new. `text` is the host's socket, or the fault.
void HostLink::logChange(bool isThere, const std::string& text) {
    if (m_isLoggedAs == isThere)
        return;
    const char* const fault = m_isLoggedAs ? "lost the host: " : "no host answers yet: ";
    logLine((isThere ? "the host answers at " : fault) + text);
    m_isLoggedAs = isThere;
}

/// Publishes that there is a host, or why there is none, if that has changed.
void HostLink::publishHost(const std::string& fault) {
    const bool isThere = fault.empty();
    const bool isSame = !m_since.empty() && m_fault.empty() == isThere;
    if (isSame && fault == m_fault)
        return;
    m_fault = fault;
    if (!isSame)
        m_since = board::utcText(board::calendarTime());
    const Json socket = isThere                  ? Json(m_host->calls.path())
                        : m_place.socket.empty() ? Json(nullptr)
                                                 : Json(m_place.socket);
    m_feed.publish(EventFeed::HOST, textOf({{"connected", isThere},
                                            {"fault", isThere ? Json(nullptr) : Json(fault)},
                                            {"since", m_since},
                                            {"socket", socket},
                                            {"boardweb", BOARDWEB_VERSION}}));
}

/// Publishes the events that have arrived. True if there may be more to take without a wait.
bool HostLink::takeEvents() {
    int count = 0;
    withHost([&] {
        for (; count < MOST_AT_ONCE; ++count) {
            const auto reply = m_host->events.tryNext();
            if (!reply)
                return;
            m_feed.publish(EventFeed::BOARD, textOf(*reply));
            m_isStatusDue = true;
        }
    });
    return count == MOST_AT_ONCE;
}

void HostLink::askStatus() {
    m_isStatusDue = false;
    withHost([&] {
        m_status = m_host->calls.call("Status");
        Json status = m_status;
        status.erase("events");
        m_feed.publish(EventFeed::STATUS, textOf(status));
    });
}

void HostLink::tick() {
    // Periods that this thread has missed have no values. A slow host may have kept the thread
    // waiting, or the program may have been stopped.
    for (; Clock::now() - m_nextTick >= History::PERIOD; m_nextTick += History::PERIOD)
        m_history.add(nullptr, board::calendarTime());
    m_nextTick += History::PERIOD;
    askStatus();
    if (!m_host)
        m_feed.keepAlive();
    m_history.add(m_status, board::calendarTime());
}

Answer HostLink::answerTo(Question question) {
    const char* const method = methodOf(question);
    try {
        const Json reply = m_host->calls.call(method);
        if (question != Question::METRICS)
            return {true, std::make_shared<const std::string>(textOf(reply))};
        const auto text = reply.find("text");
        if (text != reply.end() && text->is_string())
            return {true, std::make_shared<const std::string>(text->get<std::string>())};
        return failure("the host's reply to Metrics has no text");
    } catch (const StatusClient::CallError& error) {
        if (error.name == NO_METHOD)
            return failure(std::string("the host is too old to know the method ") + method);
        return failure(error.what());
    }
}

void HostLink::answerQuestion(Question question) {
    Answer answer;
    withHost([&] { answer = answerTo(question); });
    m_questions.answer(answer.text ? answer
                                   : failure(m_host ? "boardweb is shutting down" : m_fault));
}

/// Publishes the LEDs while the feed has readers. True if there may be more to take without a wait.
bool HostLink::followLeds() {
    bool mayHaveMore = false;
    if (m_host && m_feed.readers() == 0 && m_host->leds) {
        dropLeds();
        m_host->nextLeds = {};
    }
    if (m_host && m_feed.readers() != 0)
        try {
            readLeds(mayHaveMore);
        } catch (const StatusClient::CallError& error) {
            // A host that is older than this program may not have the method.
            m_host->mayHaveLeds = error.name != NO_METHOD;
            dropLeds();
        } catch (const board::Error&) { // takeEvents() notices if the host has ended
            dropLeds();
        }
    return mayHaveMore;
}

/// Stops following the LEDs and tells readers that the state is unknown. After a failure, the
/// host is asked for the LEDs again after a pause, unless it lacks the method.
void HostLink::dropLeds() {
    if (m_host->leds && m_feed.readers() != 0)
        m_feed.publish(EventFeed::LEDS, textOf({{"lit", nullptr}}));
    m_host->leds.reset();
    m_host->nextLeds = Clock::now() + LASTING;
    m_feed.forget(EventFeed::LEDS);
}

void HostLink::readLeds(bool& mayHaveMore) {
    if (!m_host->leds) {
        if (!m_host->mayHaveLeds || Clock::now() < m_host->nextLeds)
            return;
        m_host->leds.emplace(m_host->calls.path(), m_wait, LIMITS);
        m_feed.publish(EventFeed::LEDS, textOf(m_host->leds->begin("MonitorLeds")));
    }
    for (int i = 0; i < MOST_AT_ONCE; ++i) {
        const auto reply = m_host->leds->tryNext();
        if (!reply)
            return;
        m_feed.publish(EventFeed::LEDS, textOf(*reply));
    }
    mayHaveMore = true;
}

} // namespace boardweb
