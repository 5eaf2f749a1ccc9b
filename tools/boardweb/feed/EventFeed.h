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

/// Carries messages from the thread that publishes them to many readers. All readers share the same
/// texts. A slow reader keeps only the texts that are being sent to it, without copying them, and
/// loses the messages that the ring forgets before they are sent.
///
/// Can be used on any thread.
class EventFeed {
public:
    static constexpr std::size_t MOST_READERS = 100;
    static constexpr std::size_t RING_BYTES = 256U << 10U;

    enum Kind { HOST, STATUS, LEDS, BOARD };

    /// The connection of a reader. The feed calls these functions with its lock held, so they must
    /// not call the feed.
    class Connection {
    public:
        virtual ~Connection() = default;
        /// Called if there is nothing to read. `read` must not be called again before `resume`.
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

        /// The texts that are being sent. Short ones may belong to this reader; the others are
        /// shared.
        std::vector<EventRing::Text> texts() const;

    private:
        friend class EventFeed;
        /// Joins the feed, whose lock the caller holds. `first` is sent before the message `next`.
        Reader(EventFeed& feed, Connection& connection, std::uint64_t next,
               std::vector<EventRing::Text> first);

        EventFeed& m_feed;
        Connection& m_connection;
        std::uint64_t m_next;                 ///< the number of the next message
        std::vector<EventRing::Text> m_texts; ///< texts that have not been sent completely
        std::size_t m_sent = 0;               ///< how many bytes of the first text have been sent
        bool m_isPaused = false;
    };

    /// `onJoin` is called, with the lock held, when a reader joins.
    EventFeed(std::string run, std::function<void()> onJoin);

    /// Sends a message to all readers. `data` is JSON on one line. A new reader first gets the last
    /// message of each kind except BOARD.
    void publish(Kind kind, const std::string& data);
    /// Forgets the last message of this kind, so that new readers don't get what is no longer true.
    void forget(Kind kind);
    /// Sends a comment, which clients ignore, so that dead connections are noticed.
    void keepAlive();

    std::size_t readers() const;

    /// A new reader, or null if there are too many. The reader must not outlive the feed or the
    /// connection. `lastId` identifies the client's last message; it is empty if the client has had
    /// none. If that message is from this run, the reader continues after it. Otherwise, it begins
    /// with the present state.
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
    std::array<EventRing::Text, BOARD> m_last; ///< content of each kind's last message, or null
    std::list<Reader*> m_readers;
    bool m_hasEnded = false;
};

} // namespace boardweb
