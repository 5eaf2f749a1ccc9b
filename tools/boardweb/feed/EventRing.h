#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace boardweb {

/// The last messages of an event stream, in the form in which clients get them. Messages are
/// numbered from 1. The oldest ones are forgotten. Only one thread at a time may use the ring.
class EventRing {
public:
    using Text = std::shared_ptr<const std::string>;

    /// `run` is a word that differs between runs of the program and becomes part of each
    /// identifier, so that identifiers from an earlier run are recognized. The messages take about
    /// `limit` bytes of memory at most; the newest one is kept even if it takes more.
    EventRing(std::string run, std::size_t limit) : m_run(std::move(run)), m_limit(limit) {}

    /// Adds a message with this content.
    void add(const std::string& content) { keep(idLine(newest() + 1) + content); }
    /// Adds a message that clients ignore. It has a number like any other.
    void addComment() { keep(":\n\n"); }

    /// The first line of the message with that number, which need not be in the ring.
    std::string idLine(std::uint64_t number) const;
    /// The rest of a message. `data` must be one line.
    static std::string contentOf(const char* event, const std::string& data);

    /// The number of the message that was added last; 0 before the first one.
    std::uint64_t newest() const { return m_oldest + m_messages.size() - 1; }
    /// The number of the first message that is still in the ring, or of the next message if the
    /// ring is empty.
    std::uint64_t oldest() const { return m_oldest; }
    /// The message with that number, which must still be in the ring.
    const Text& at(std::uint64_t number) const {
        return m_messages[static_cast<std::size_t>(number - m_oldest)];
    }

    /// The number of the message that `id` identifies; empty if `id` does not identify a message of
    /// this run. The ring may have forgotten the message already.
    std::optional<std::uint64_t> numberOf(std::string_view id) const;

private:
    void keep(std::string text);

    const std::string m_run;
    const std::size_t m_limit;
    std::deque<Text> m_messages;
    std::uint64_t m_oldest = 1;
    std::size_t m_bytes = 0;
};

} // namespace boardweb
