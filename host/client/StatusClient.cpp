#include "client/StatusClient.h"

#include <cerrno>
#include <utility>
#include <vector>

#include "base/File.h"
#include "base/LocalSocket.h"
#include "base/Text.h"
#include "client/StatusPlaces.h"

using nlohmann::ordered_json;

namespace board {

namespace {

constexpr std::size_t LARGEST_REPLY = 4U << 20U;

FileDescriptor connect(const std::string& path, std::chrono::milliseconds limit) {
    FileDescriptor socket = tryConnect(path, limit);
    if (socket.isOpen())
        return socket;
    if (errno == ENOENT || errno == ECONNREFUSED || errno == ENOTDIR)
        throw NoHost(path + ": no host answers");
    if (errno == EAGAIN)
        throw Error(path + ": the host does not accept a connection");
    failWith(path, "can't connect to the host", errno);
}

/// The value as a host sends it. JSON can't hold bytes that are not UTF-8, so each such byte is
/// replaced by the replacement character.
std::string asSent(const ordered_json& value) {
    return value.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

} // namespace

StatusClient::StatusClient(std::string path, Wait wait, Limits limits)
    : m_path(std::move(path)), m_wait(std::move(wait)), m_answerLimit(limits.answer),
      m_socket(connect(m_path, limits.accept)), m_input(LARGEST_REPLY) {}

void StatusClient::fail(const std::string& what) const {
    throw Error(m_path + ": " + what);
}

void StatusClient::send(const varlink::Request& request) {
    const std::string bytes = varlink::toBytes(request);
    const ssize_t sent = trySend(m_socket, bytes.data(), bytes.size());
    // A host that has closed the connection has sent the reason, which can still be read.
    if (sent < 0 && errno != EPIPE && errno != ECONNRESET)
        failWith(m_path, "can't send to the host", errno);
    if (sent >= 0 && static_cast<std::size_t>(sent) != bytes.size())
        fail("the host does not read what is sent");
}

std::optional<varlink::Reply> StatusClient::tryReceive() {
    for (;;) {
        if (const auto message = m_input.take()) {
            auto reply = varlink::parseReply(*message);
            if (!reply)
                fail("answers with something other than a Varlink reply");
            if (!reply->error.empty())
                throw CallError(m_path + ": the host answers with the error " + reply->error + " " +
                                    asSent(reply->parameters),
                                *reply);
            return reply;
        }
        if (m_input.isTooLong())
            fail("the host's reply is too long");
        char chunk[65536];
        const ssize_t count = tryRead(m_socket, chunk, sizeof chunk);
        if (count == 0 || (count < 0 && errno == ECONNRESET))
            fail("the host has ended or closed the connection");
        if (count < 0 && errno == EAGAIN)
            return std::nullopt;
        if (count < 0)
            failWith(m_path, "can't read from the host", errno);
        m_input.append(chunk, static_cast<std::size_t>(count));
    }
}

std::optional<varlink::Reply> StatusClient::receive(std::optional<Clock::time_point> end) {
    for (;;) {
        if (auto reply = tryReceive())
            return reply;
        if (end && Clock::now() >= *end)
            fail("the host does not answer");
        if (m_wait(end, m_socket.number()))
            return std::nullopt;
    }
}

varlink::Reply StatusClient::awaitReply() {
    auto reply = receive(Clock::now() + m_answerLimit);
    if (!reply)
        fail("interrupted before the host has answered");
    return std::move(*reply);
}

ordered_json StatusClient::call(const std::string& method, const ordered_json& parameters) {
    varlink::Request request;
    request.method = "org.boarddrivers.Host." + method;
    request.parameters = parameters;
    send(request);
    return awaitReply().parameters;
}

void StatusClient::monitor() {
    static_cast<void>(begin("Monitor"));
}

ordered_json StatusClient::begin(const std::string& method) {
    varlink::Request request;
    request.method = "org.boarddrivers.Host." + method;
    request.more = true;
    send(request);
    return awaitReply().parameters;
}

std::optional<ordered_json> StatusClient::tryNext() {
    auto reply = tryReceive();
    return reply ? std::optional(std::move(reply->parameters)) : std::nullopt;
}

std::optional<StatusClient::Event> StatusClient::next() {
    if (m_wait(Clock::now(), m_socket.number())) // ends even if events never stop coming
        return std::nullopt;
    auto reply = receive(std::nullopt);
    if (!reply)
        return std::nullopt;
    const auto lost = reply->parameters.find("lost");
    const bool isCounted = lost != reply->parameters.end() && lost->is_number_integer();
    const long long count = isCounted ? lost->get<long long>() : 0;
    return Event{std::move(reply->parameters["event"]), count};
}

FoundHost findHost(const std::string& profile, bool isSimulated, const StatusClient::Wait& wait,
                   StatusClient::Limits limits) {
    const std::string wanted = reportedProfile(profile);
    const std::vector<std::string> places = statusPlaces(profile, isSimulated);
    std::string others, failures;
    for (const std::string& place : places)
        try {
            StatusClient client(place, wait, limits);
            ordered_json status = client.call("Status");
            const auto hosted = status.find("profile");
            if (hosted != status.end() && asSent(*hosted) == asSent(wanted))
                return {std::move(client), std::move(status)};
            others +=
                "; " + place + " answers for another profile" +
                (hosted != status.end() && hosted->is_string() ? ", " + hosted->get<std::string>()
                                                               : "");
        } catch (const NoHost&) { // the usual case, which the message below covers
        } catch (const Error& error) {
            failures += std::string(failures.empty() ? "" : "; ") + error.what();
        }
    if (!failures.empty())
        throw Error("can't ask a host of " + profile + ": " + failures);
    throw NoHost("no host of " + profile + " answers at " + joinChoices(places) +
                 " (start one with `boardctl --board " + profile + " run`)" + others);
}

} // namespace board
