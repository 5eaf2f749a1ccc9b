#include "status/StatusServer.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include <sys/epoll.h>

#include "base/Error.h"
#include "base/File.h"

using nlohmann::ordered_json;

namespace board {

namespace {

FileDescriptor makePoll() {
    FileDescriptor poll(::epoll_create1(EPOLL_CLOEXEC));
    if (!poll.isOpen())
        throw Error("can't create a descriptor to wait for clients: " + reasonOf(errno));
    return poll;
}

bool control(const FileDescriptor& poll, int operation, int descriptor, unsigned events,
             void* client) {
    epoll_event event{};
    event.events = events;
    event.data.ptr = client;
    return ::epoll_ctl(poll.number(), operation, descriptor, &event) == 0;
}

// A new connection is announced once. If it can't be accepted because the process has too many
// files open, the loop must not be woken for it again and again.
constexpr unsigned LISTENING = EPOLLIN | static_cast<unsigned>(EPOLLET);

} // namespace

StatusServer::StatusServer(const std::string& path, const StatusAnswers& answers)
    : m_calls(answers), m_listener(path), m_poll(makePoll()) {
    if (!control(m_poll, EPOLL_CTL_ADD, m_listener.descriptor(), LISTENING, nullptr))
        failWith(path, "can't wait for clients", errno);
}

void StatusServer::serve() {
    constexpr int MOST_READY = 16; // the rest is still ready in the next call
    epoll_event events[MOST_READY];
    const int count = ::epoll_wait(m_poll.number(), events, MOST_READY, 0);
    for (int i = 0; i < count; ++i)
        if (auto* const client = static_cast<Client*>(events[i].data.ptr))
            attend(*client, events[i].events);
        else
            m_mayAccept = true;
    removeEnded();
    // Tries again if an earlier call failed, because a client may just have freed a descriptor.
    if (m_mayAccept)
        acceptClients();
}

void StatusServer::acceptClients() {
    constexpr int MOST_AT_ONCE = 64;
    for (int i = 0; i < MOST_AT_ONCE; ++i) {
        FileDescriptor socket = m_listener.tryAccept();
        if (!socket.isOpen()) {
            m_mayAccept = errno != EAGAIN;
            return;
        }
        if (m_clients.size() >= MOST_CLIENTS) {
            const std::string bytes = varlink::toBytes(tooManyClients(MOST_CLIENTS));
            static_cast<void>(trySend(socket, bytes.data(), bytes.size()));
            continue;
        }
        Client& client = m_clients.emplace_back(std::move(socket));
        client.awaited = EPOLLIN;
        if (!control(m_poll, EPOLL_CTL_ADD, client.socket.number(), client.awaited, &client))
            m_clients.pop_back();
    }
    // If more connections wait, `descriptor` becomes readable again.
    static_cast<void>(control(m_poll, EPOLL_CTL_MOD, m_listener.descriptor(), LISTENING, nullptr));
}

void StatusServer::attend(Client& client, unsigned events) {
    if ((events & (EPOLLHUP | EPOLLERR)) != 0) {
        client.socket.close();
        return;
    }
    if ((events & EPOLLIN) != 0)
        receive(client);
    send(client);
    if (client.output.empty() && client.interest == Interest::NONE)
        answerNext(client);
    send(client);
    awaitMore(client);
}

void StatusServer::receive(Client& client) {
    char chunk[16384];
    const ssize_t count = tryRead(client.socket, chunk, sizeof chunk);
    if (count > 0)
        client.input.append(chunk, static_cast<std::size_t>(count));
    else if (count == 0)
        client.hasSentAll = true;
    else if (errno != EAGAIN)
        client.socket.close();
}

void StatusServer::answerNext(Client& client) const {
    const bool isTooLong = client.input.isTooLong();
    const auto message = client.input.take();
    if (!message && !isTooLong)
        return;
    const auto request = isTooLong ? std::nullopt : varlink::parseRequest(*message);
    if (!request) {
        client.socket.close();
        return;
    }
    const varlink::Reply reply = m_calls.reply(*request);
    if (request->oneway)
        return;
    client.output = varlink::toBytes(reply);
    if (!reply.continues)
        return;
    const auto lit = reply.parameters.find("lit");
    client.interest = lit == reply.parameters.end() ? Interest::EVENTS : Interest::LEDS;
    if (client.interest == Interest::LEDS)
        client.lit = client.litNow = lit->get<std::uint32_t>();
}

/// The reply that tells the client what it has missed; empty if it has missed nothing.
std::string StatusServer::newsFor(Client& client) {
    if (client.lost > 0)
        return varlink::toBytes(eventReply(nullptr, std::exchange(client.lost, 0)));
    if (client.lit == client.litNow)
        return "";
    client.lit = client.litNow;
    return varlink::toBytes(litReply(client.lit));
}

void StatusServer::send(Client& client) {
    while (client.socket.isOpen()) {
        if (client.output.empty())
            client.output = newsFor(client);
        if (client.output.empty())
            return;
        const ssize_t sent = trySend(client.socket, client.output.data(), client.output.size());
        if (sent >= 0)
            client.output.erase(0, static_cast<std::size_t>(sent));
        else if (errno == EAGAIN)
            return;
        else
            client.socket.close();
    }
}

void StatusServer::awaitMore(Client& client) {
    unsigned awaited = EPOLLIN;
    if (!client.output.empty() || (client.interest == Interest::NONE && client.input.hasMessage()))
        awaited = EPOLLOUT; // if a request has arrived, the next `serve` handles it
    else if (client.interest != Interest::NONE)
        awaited = 0; // epoll reports the end of a connection anyway
    else if (client.hasSentAll)
        client.socket.close();
    if (!client.socket.isOpen() || awaited == client.awaited)
        return;
    client.awaited = awaited;
    if (!control(m_poll, EPOLL_CTL_MOD, client.socket.number(), awaited, &client))
        client.socket.close();
}

void StatusServer::publish(const ordered_json& event) {
    const std::string bytes = varlink::toBytes(eventReply(event, 0));
    for (Client& client : m_clients) {
        if (client.interest != Interest::EVENTS)
            continue;
        if (client.output.size() + bytes.size() > MOST_WAITING_EVENTS) {
            ++client.lost;
            continue;
        }
        client.output +=
            client.lost == 0 ? bytes : varlink::toBytes(eventReply(event, client.lost));
        client.lost = 0;
        send(client);
        awaitMore(client);
    }
    removeEnded();
}

bool StatusServer::isAskedForLeds() const {
    return std::any_of(m_clients.begin(), m_clients.end(),
                       [](const Client& client) { return client.interest == Interest::LEDS; });
}

void StatusServer::publishLeds(std::uint32_t lit) {
    for (Client& client : m_clients) {
        if (client.interest != Interest::LEDS)
            continue;
        client.litNow = lit;
        send(client);
        awaitMore(client);
    }
    removeEnded();
}

void StatusServer::removeEnded() {
    m_clients.remove_if([](const Client& client) { return !client.socket.isOpen(); });
}

} // namespace board
