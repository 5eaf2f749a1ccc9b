#include "http/EventStream.h"

#include <cstdint>
#include <memory>
#include <new>

#include <microhttpd.h>
#include <sys/socket.h>

namespace boardweb {

namespace {

constexpr std::size_t BLOCK = 2048; // only for clients that speak HTTP/1.0
constexpr int SOCKET_BUFFER = 64 << 10;
constexpr unsigned LONGEST_STALL = 60; // seconds

class Stream final : public EventFeed::Connection {
public:
    explicit Stream(Exchange& exchange) : m_exchange(exchange) {}

    bool join(EventFeed& feed, const std::string& lastId) {
        m_reader = feed.join(lastId, *this);
        return m_reader != nullptr;
    }

    void pause() override { m_exchange.pause(); }
    void resume() override { MHD_resume_connection(m_exchange.connection()); }

    ssize_t read(char* buffer, std::size_t size) {
        if (hasGone())
            return MHD_CONTENT_READER_END_WITH_ERROR;
        const std::ptrdiff_t count = m_reader->read(buffer, size);
        return count == EventFeed::Reader::END ? MHD_CONTENT_READER_END_OF_STREAM : count;
    }

private:
    /// Whether the client has closed the connection. The server notices that only when a write
    /// fails, and until then the client would count as a reader.
    bool hasGone() const {
        char byte = 0;
        return ::recv(m_exchange.socket(), &byte, 1, MSG_PEEK | MSG_DONTWAIT) == 0;
    }

    Exchange& m_exchange;
    std::unique_ptr<EventFeed::Reader> m_reader;
};

ssize_t readStream(void* stream, std::uint64_t, char* buffer, std::size_t size) noexcept {
    try {
        return static_cast<Stream*>(stream)->read(buffer, size);
    } catch (...) { // no memory
        return MHD_CONTENT_READER_END_WITH_ERROR;
    }
}

void endStream(void* stream) noexcept {
    delete static_cast<Stream*>(stream);
}

} // namespace

Response eventStream(EventFeed& feed, const std::string& lastId, Exchange& exchange) {
    auto stream = std::make_unique<Stream>(exchange);
    if (!stream->join(feed, lastId))
        return nullptr;
    Response response(MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, BLOCK, readStream,
                                                        stream.get(), endStream));
    if (!response)
        throw std::bad_alloc();
    static_cast<void>(stream.release());
    addHeaders(*response, "text/event-stream");
    // Without this limit, the system would keep megabytes for each client that does not read.
    static_cast<void>(::setsockopt(exchange.socket(), SOL_SOCKET, SO_SNDBUF, &SOCKET_BUFFER,
                                   sizeof SOCKET_BUFFER));
    MHD_set_connection_option(exchange.connection(), MHD_CONNECTION_OPTION_TIMEOUT, LONGEST_STALL);
    return response;
}

} // namespace boardweb
