#include "feed/EventFeed.h"

#include <algorithm>
#include <utility>

namespace boardweb {

namespace {

constexpr const char* NAMES[] = {"host", "status", "leds", "board"};

/// How long a browser waits before it connects again.
constexpr char RETRY[] = "retry: 1000\n\n";

} // namespace

EventFeed::EventFeed(std::string run, std::function<void()> onJoin)
    : m_onJoin(std::move(onJoin)), m_ring(std::move(run), RING_BYTES) {}

void EventFeed::publish(Kind kind, const std::string& data) {
    auto content = std::make_shared<const std::string>(EventRing::contentOf(NAMES[kind], data));
    const std::lock_guard lock(m_mutex);
    m_ring.add(*content);
    if (kind != BOARD)
        m_last[kind] = std::move(content);
    wakeReaders();
}

void EventFeed::forget(Kind kind) {
    const std::lock_guard lock(m_mutex);
    m_last.at(kind).reset();
}

void EventFeed::keepAlive() {
    const std::lock_guard lock(m_mutex);
    m_ring.addComment();
    wakeReaders();
}

void EventFeed::end() {
    const std::lock_guard lock(m_mutex);
    m_hasEnded = true;
    wakeReaders();
}

std::size_t EventFeed::readers() const {
    const std::lock_guard lock(m_mutex);
    return m_readers.size();
}

void EventFeed::wakeReaders() {
    for (Reader* const reader : m_readers)
        if (std::exchange(reader->m_isPaused, false))
            reader->m_connection.resume();
}

std::unique_ptr<EventFeed::Reader> EventFeed::join(const std::string& lastId,
                                                   Connection& connection) {
    const std::lock_guard lock(m_mutex);
    if (m_readers.size() >= MOST_READERS)
        return nullptr;
    const auto lastNumber = m_ring.numberOf(lastId);
    auto first = lastNumber
                     ? std::vector<EventRing::Text>{std::make_shared<const std::string>(RETRY)}
                     : presentState(RETRY);
    std::unique_ptr<Reader> reader(
        new Reader(*this, connection, lastNumber.value_or(m_ring.newest()) + 1, std::move(first)));
    m_onJoin();
    return reader;
}

EventFeed::Reader::Reader(EventFeed& feed, Connection& connection, std::uint64_t next,
                          std::vector<EventRing::Text> first)
    : m_feed(feed), m_connection(connection), m_next(next), m_texts(std::move(first)) {
    m_feed.m_readers.push_back(this);
}

EventFeed::Reader::~Reader() {
    const std::lock_guard lock(m_feed.m_mutex);
    m_feed.m_readers.remove(this);
}

std::vector<EventRing::Text> EventFeed::Reader::texts() const {
    const std::lock_guard lock(m_feed.m_mutex);
    return m_texts;
}

/// The texts for a reader that needs the present state: `start`, then the last message of each
/// kind.
std::vector<EventRing::Text> EventFeed::presentState(std::string start) const {
    const auto last =
        std::find_if(m_last.rbegin(), m_last.rend(),
                     [](const EventRing::Text& content) { return content != nullptr; });
    std::vector<EventRing::Text> texts;
    // Only the last text has the number of the newest message. If an earlier text had it, a client
    // that loses the connection after that text would miss the rest.
    for (const EventRing::Text& content : m_last)
        if (content) {
            start += m_ring.idLine(&content == &*last ? m_ring.newest() : 0);
            texts.push_back(std::make_shared<const std::string>(std::exchange(start, "")));
            texts.push_back(content);
        }
    if (texts.empty())
        texts.push_back(std::make_shared<const std::string>(std::move(start)));
    return texts;
}

/// Chooses what the reader gets next. Returns false if there is nothing to send.
bool EventFeed::prepareNext(Reader& reader) const {
    if (reader.m_next > m_ring.newest())
        return false;
    if (reader.m_next < m_ring.oldest()) {
        const std::string lost =
            R"({"messages":)" + std::to_string(m_ring.newest() + 1 - reader.m_next) + "}";
        reader.m_texts = presentState(m_ring.idLine(0) + EventRing::contentOf("lost", lost));
        reader.m_next = m_ring.newest() + 1;
    } else {
        reader.m_texts = {m_ring.at(reader.m_next++)};
    }
    return true;
}

std::ptrdiff_t EventFeed::Reader::read(char* buffer, std::size_t size) {
    const std::lock_guard lock(m_feed.m_mutex);
    if (m_feed.m_hasEnded)
        return END;
    std::size_t count = 0;
    while (count < size && (!m_texts.empty() || m_feed.prepareNext(*this))) {
        const std::string& text = *m_texts.front();
        const std::size_t part = text.copy(buffer + count, size - count, m_sent);
        count += part;
        m_sent += part;
        if (m_sent == text.size()) {
            m_texts.erase(m_texts.begin());
            m_sent = 0;
        }
    }
    if (count == 0) {
        m_isPaused = true;
        m_connection.pause();
    }
    return static_cast<std::ptrdiff_t>(count);
}

} // namespace boardweb
