#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include <nlohmann/json.hpp>

/// Messages of the Varlink protocol: JSON objects, each ended by a zero byte.
namespace board::varlink {

/// A call of a method.
struct Request {
    std::string method;
    /// An object; empty if the message has none.
    nlohmann::ordered_json parameters = nlohmann::ordered_json::object();
    bool oneway = false;  ///< the client wants no reply
    bool more = false;    ///< the client accepts several replies
    bool upgrade = false; ///< the client wants to switch to another protocol
};

struct Reply {
    nlohmann::ordered_json parameters = nlohmann::ordered_json::object(); ///< an object
    bool continues = false;                                               ///< more replies follow
    std::string error; ///< the name of an error; empty for success
};

/// Parse a message, without its zero byte. Empty if the text is not such a message: if it is not a
/// JSON object, is nested more than 32 levels deep, is a request without a method, or has a member
/// of a wrong type. A member that is null counts as absent, and unknown members are ignored.
std::optional<Request> parseRequest(const std::string& text);
std::optional<Reply> parseReply(const std::string& text);

/// The bytes of a message, with the zero byte. Bytes that are not UTF-8 become the replacement
/// character.
std::string toBytes(const Request& request);
std::string toBytes(const Reply& reply);

/// Collects the bytes of one direction of a connection, and takes messages out of them.
class MessageBuffer {
public:
    /// `limit` is the most bytes that a message may have, without the zero byte.
    explicit MessageBuffer(std::size_t limit) : m_limit(limit) {}

    void append(const char* bytes, std::size_t size) { m_bytes.append(bytes, size); }

    bool hasMessage() const { return m_bytes.find('\0') != std::string::npos; }
    /// True if the next message is longer than the limit, even before it is complete.
    bool isTooLong() const;
    /// Takes the next message, without its zero byte; empty if it is not complete.
    std::optional<std::string> take();

private:
    const std::size_t m_limit;
    std::string m_bytes;
};

} // namespace board::varlink
