#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "feed/EventRing.h"

namespace boardweb {

/// Carries messages from the thread that publishes them to many readers. All share the same texts:
/// a slow reader keeps those that it is being sent, but has no copies of its own.
///
/// Any thread.
class EventFeed {
public:
    static constexpr std::size_t MOST_READERS = 100;
    static constexpr std::size_t RING_BYTES = 256U << 10U;

    enum Kind { HOST, STATUS, LEDS, BOARD };

    /// The connection of a reader. The feed calls these with its lock held, so they must not call
    /// the feed.
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

        /// Copies at most `size` bytes of the stream to `buffer`, and returns how many. If there
        /// are none, pauses the connection and returns 0. Returns END if the feed has ended.
        std::ptrdiff_t read(char* buffer, std::size_t size);

        /// What is being sent. Short texts may be its own; it shares all others.
        std::vector<EventRing::Text> texts() const;

    private:
        friend class EventFeed;
        /// Joins; the caller holds the feed's lock. `first` is sent before the message `next`.
        Reader(EventFeed& feed, Connection& connection, std::uint64_t next,
               std::vector<EventRing::Text> first);

        EventFeed& m_feed;
        Connection& m_connection;
        std::uint64_t m_next;                 ///< the number of the next message
        std::vector<EventRing::Text> m_texts; ///< what is being sent; empty if everything was
        std::size_t m_sent = 0;               ///< how much of the first one was
        bool m_isPaused = false;
    };

    /// `onJoin` is called, with the lock held, when a reader joins.
    EventFeed(std::string run, std::function<void()> onJoin);

    /// Sends a message to all readers. `data` is JSON on one line. A new reader first gets the last
    /// message of each kind except BOARD.
    void publish(Kind kind, const std::string& data);
    /// Forgets the last message of this kind, because it is no longer true. New readers don't get
    /// it.
    void forget(Kind kind);
    /// Sends a comment, which clients ignore, so that dead connections are noticed.
    void keepAlive();

    std::size_t readers() const;

    /// A new reader, or null if there are too many. It must not outlive the feed or the connection.
    /// If `lastId` is the identifier of a message of this run, the reader continues after that
    /// message. It is empty if the client has had no message.
    std::unique_ptr<Reader> join(const std::string& lastId, Connection& connection);

    /// Ends the stream of all readers, and of those that join later.
    void end();

private:
    void wakeReaders();
    std::vector<EventRing::Text> presentState(std::string start) const;
    bool prepareNext(Reader& reader) const;

    const std::function<void()> m_onJoin;
    mutable std::mutex m_mutex; // guards everything below, and the readers
    EventRing m_ring;
    std::array<EventRing::Text, BOARD> m_last; ///< content of the last messages; null without one
    std::list<Reader*> m_readers;
    bool m_hasEnded = false;
};

} // namespace boardweb
