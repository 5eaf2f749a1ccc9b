#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>

#include "feed/EventRing.h"

namespace boardweb {

/// Carries messages from the thread that publishes them to any number of readers. A reader that is
/// slow costs its position in the ring and the message that it is being sent.
///
/// Any thread.
class EventFeed {
public:
    static constexpr std::size_t MOST_READERS = 100;
    static constexpr std::size_t RING_BYTES = 256U << 10U;

    enum Kind { HOST, STATUS, LEDS, BOARD };

    /// The connection of a reader. The feed calls these with its lock held: they must not call it.
    class Connection {
    public:
        virtual ~Connection() = default;
        /// There is nothing to read. `read` must not be called again before `resume`.
        virtual void pause() = 0;
        virtual void resume() = 0;
    };

    class Reader {
    public:
        static constexpr std::ptrdiff_t END = -1;

        ~Reader();
        Reader(const Reader&) = delete;
        Reader& operator=(const Reader&) = delete;

        /// Copies at most `size` bytes of the stream to `buffer`. Returns how many; 0 if there are
        /// none, and the connection has been paused; END if the feed has ended.
        std::ptrdiff_t read(char* buffer, std::size_t size);

    private:
        friend class EventFeed;
        /// Joins; the caller holds the feed's lock. `first` is sent before the message `next`.
        Reader(EventFeed& feed, Connection& connection, std::uint64_t next, EventRing::Text first);

        EventFeed& m_feed;
        Connection& m_connection;
        std::uint64_t m_next;   ///< the number of the next message
        EventRing::Text m_text; ///< what is being sent; null if everything was
        std::size_t m_sent = 0; ///< how much of it was
        bool m_isPaused = false;
    };

    /// `onJoin` is called, with the lock held, when a reader joins.
    EventFeed(std::string run, std::function<void()> onJoin);

    /// Sends a message to all readers. `data` is JSON in one line. A new reader gets the last
    /// message of each kind except BOARD at first.
    void publish(Kind kind, const std::string& data);
    /// What was published of this kind does not hold any more: new readers don't get it.
    void forget(Kind kind);
    /// Sends something without a meaning, so that a connection that is dead is noticed.
    void keepAlive();

    std::size_t readers() const;

    /// A new reader, or null if there are too many. Neither it nor the connection may outlive the
    /// feed, nor the connection the reader. A reader whose last message was `lastId` continues
    /// after that one, if it is of this run. An empty `lastId` stands for none.
    std::unique_ptr<Reader> join(const std::string& lastId, Connection& connection);

    /// Ends the stream of all readers, and of those that join later.
    void end();

private:
    void wakeReaders();
    std::string presentState() const;
    bool prepareNext(Reader& reader) const;

    const std::function<void()> m_onJoin;
    mutable std::mutex m_mutex; // guards everything below, and the readers
    EventRing m_ring;
    std::array<std::string, BOARD> m_last; ///< the data of each kind; empty if there is none
    std::list<Reader*> m_readers;
    bool m_hasEnded = false;
};

} // namespace boardweb
