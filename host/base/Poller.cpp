#include "base/Poller.h"

#include <cerrno>
#include <string>
#include <utility>

#include <sys/epoll.h>

#include "base/Error.h"
#include "base/File.h"

namespace board {

namespace {

constexpr unsigned ID_SHIFT = 32;

FileDescriptor makeEpoll() {
    FileDescriptor descriptor(::epoll_create1(EPOLL_CLOEXEC));
    if (!descriptor.isOpen())
        throw Error("can't create a descriptor to wait for others: " + reasonOf(errno));
    return descriptor;
}

} // namespace

Poller::Poller() : m_descriptor(makeEpoll()) {}

void Poller::control(int operation, int descriptor, std::uint32_t events, std::uint32_t id) const {
    epoll_event event{};
    event.events = events;
    event.data.u64 = std::uint64_t{id} << ID_SHIFT | static_cast<std::uint32_t>(descriptor);
    if (::epoll_ctl(m_descriptor.number(), operation, descriptor, &event) != 0)
        throw Error("can't wait for descriptor " + std::to_string(descriptor) + ": " +
                    reasonOf(errno));
}

void Poller::add(int descriptor, Action action) {
    control(EPOLL_CTL_ADD, descriptor, EPOLLIN, ++m_lastId);
    m_entries[descriptor] = {m_lastId, std::make_shared<const Action>(std::move(action))};
}

void Poller::callWhenWritable(int descriptor, bool isWanted) {
    const std::uint32_t events = isWanted ? EPOLLIN | EPOLLOUT : EPOLLIN;
    control(EPOLL_CTL_MOD, descriptor, events, m_entries.at(descriptor).id);
}

void Poller::remove(int descriptor) {
    if (m_entries.erase(descriptor) != 0)
        ::epoll_ctl(m_descriptor.number(), EPOLL_CTL_DEL, descriptor, nullptr);
}

void Poller::serve() {
    constexpr int MOST_AT_ONCE = 16; // the rest stays ready for the next call
    epoll_event events[MOST_AT_ONCE];
    const int count = ::epoll_wait(m_descriptor.number(), events, MOST_AT_ONCE, 0);
    for (int i = 0; i < count; ++i) {
        const std::uint64_t data = events[i].data.u64;
        const auto found = m_entries.find(static_cast<int>(static_cast<std::uint32_t>(data)));
        if (found == m_entries.end() || found->second.id != data >> ID_SHIFT)
            continue;
        // Kept alive, because the action may remove its own entry.
        const std::shared_ptr<const Action> action = found->second.action;
        (*action)();
    }
}

} // namespace board
