#include "client/Varlink.h"

#include <algorithm>
#include <utility>

using nlohmann::ordered_json;

namespace board::varlink {

namespace {

// Deeper nesting could exhaust the stack of recursive functions that process the JSON.
constexpr int DEEPEST = 32;

/// Whether objects and arrays are nested too deeply, if `text` is JSON. The parser could report the
/// depth itself, but would then search the whole enclosing array whenever an object ends.
bool isTooDeep(const std::string& text) {
    int depth = 0;
    bool isInString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char each = text[i];
        if (isInString && each == '\\')
            ++i;
        else if (each == '"')
            isInString = !isInString;
        else if (!isInString && (each == '[' || each == '{') && ++depth > DEEPEST)
            return true;
        else if (!isInString && (each == ']' || each == '}'))
            --depth;
    }
    return false;
}

/// The object that `text` holds; empty if it holds anything else.
std::optional<ordered_json> parseObject(const std::string& text) {
    if (isTooDeep(text))
        return std::nullopt;
    ordered_json json = ordered_json::parse(text, nullptr, false);
    return json.is_object() ? std::optional(std::move(json)) : std::nullopt;
}

/// Stores the member `key` in `value`, if there is one. False if its type is wrong.
template <class Value>
bool readMember(const ordered_json& message, const char* key,
                bool (ordered_json::*hasType)() const noexcept, Value& value) {
    const auto member = message.find(key);
    if (member == message.end() || member->is_null())
        return true;
    if (!((*member).*hasType)())
        return false;
    member->get_to(value);
    return true;
}

std::string dumped(const ordered_json& message) {
    return message.dump(-1, ' ', false, ordered_json::error_handler_t::replace) + '\0';
}

} // namespace

std::optional<Request> parseRequest(const std::string& text) {
    const auto message = parseObject(text);
    Request request;
    const bool isRequest =
        message && message->contains("method") && !message->at("method").is_null() &&
        readMember(*message, "method", &ordered_json::is_string, request.method) &&
        readMember(*message, "parameters", &ordered_json::is_object, request.parameters) &&
        readMember(*message, "oneway", &ordered_json::is_boolean, request.oneway) &&
        readMember(*message, "more", &ordered_json::is_boolean, request.more) &&
        readMember(*message, "upgrade", &ordered_json::is_boolean, request.upgrade);
    return isRequest ? std::optional(std::move(request)) : std::nullopt;
}

std::optional<Reply> parseReply(const std::string& text) {
    const auto message = parseObject(text);
    Reply reply;
    const bool isReply =
        message && readMember(*message, "parameters", &ordered_json::is_object, reply.parameters) &&
        readMember(*message, "continues", &ordered_json::is_boolean, reply.continues) &&
        readMember(*message, "error", &ordered_json::is_string, reply.error);
    return isReply ? std::optional(std::move(reply)) : std::nullopt;
}

std::string toBytes(const Request& request) {
    ordered_json message = {{"method", request.method}};
    if (!request.parameters.empty())
        message["parameters"] = request.parameters;
    for (const auto& [key, isSet] :
         {std::pair("oneway", request.oneway), std::pair("more", request.more),
          std::pair("upgrade", request.upgrade)})
        if (isSet)
            message[key] = true;
    return dumped(message);
}

std::string toBytes(const Reply& reply) {
    ordered_json message;
    if (!reply.error.empty())
        message["error"] = reply.error;
    message["parameters"] = reply.parameters;
    if (reply.continues)
        message["continues"] = true;
    return dumped(message);
}

bool MessageBuffer::isTooLong() const {
    return std::min(m_bytes.find('\0'), m_bytes.size()) > m_limit;
}

std::optional<std::string> MessageBuffer::take() {
    const auto end = m_bytes.find('\0');
    if (end == std::string::npos)
        return std::nullopt;
    std::string message = m_bytes.substr(0, end);
    m_bytes.erase(0, end + 1);
    return message;
}

} // namespace board::varlink
