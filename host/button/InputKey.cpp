#include "button/InputKey.h"

#include <array>
#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <linux/input.h>
#include <sys/ioctl.h>

#include "base/Error.h"
#include "base/File.h"
#include "base/Text.h"

namespace board {

namespace {

/// A set of key codes, one bit each.
class KeySet {
public:
    bool has(unsigned code) const {
        return code <= KEY_MAX && (m_bits[code / BITS] >> (code % BITS) & 1) != 0;
    }

    /// The keys that the device has.
    static KeySet of(const std::string& device, int file) {
        KeySet keys;
        if (::ioctl(file, EVIOCGBIT(EV_KEY, sizeof m_bits), keys.m_bits.data()) < 0)
            throw Error(device +
                        ": is not an input device (expected one such as /dev/input/event0)");
        return keys;
    }

    /// The keys that are down; empty if the device can't report them any more.
    static KeySet downOf(int file) {
        KeySet keys;
        if (::ioctl(file, EVIOCGKEY(sizeof m_bits), keys.m_bits.data()) < 0)
            return KeySet();
        return keys;
    }

    std::vector<unsigned> codes() const {
        std::vector<unsigned> codes;
        for (unsigned code = 0; code <= KEY_MAX; ++code)
            if (has(code))
                codes.push_back(code);
        return codes;
    }

private:
    static constexpr unsigned BITS = 8 * sizeof(unsigned long); // per word of the kernel's array

    std::array<unsigned long, KEY_MAX / BITS + 1> m_bits{};
};

unsigned codeOf(const std::string& device, int file, std::optional<unsigned> wanted) {
    const KeySet keys = KeySet::of(device, file);
    const std::vector<unsigned> codes = keys.codes();
    if (wanted ? keys.has(*wanted) : codes.size() == 1)
        return wanted.value_or(codes.front());
    if (codes.empty())
        throw Error(device + ": has no keys");
    std::vector<std::string> list;
    for (const unsigned code : codes)
        list.push_back(std::to_string(code));
    throw Error(device + ": has " +
                (wanted ? "no key " + std::to_string(*wanted) : "several keys") +
                " (expected one of the codes " + join(list) + ")");
}

} // namespace

KeyEvents::KeyEvents(std::string name, int descriptor, unsigned code,
                     std::function<bool()> isDownNow)
    : m_name(std::move(name)), m_descriptor(descriptor), m_code(code),
      m_isDownNow(std::move(isDownNow)), m_isDown(m_isDownNow()) {}

std::vector<bool> KeyEvents::read() {
    std::array<input_event, 64> events;
    const ssize_t got = tryReadOnce(m_descriptor, events.data(), sizeof events);
    if (got < 0 && (errno == EAGAIN || errno == EINTR))
        return {};
    if (got < 0)
        failWith(m_name, errno == ENODEV ? "can't read, the device is gone" : "can't read", errno);
    const auto count = static_cast<std::size_t>(got) / sizeof(input_event);
    if (count == 0)
        throw Error(m_name + ": delivers no more events");

    std::vector<bool> levels;
    const auto reach = [&](bool isDown) {
        if (std::exchange(m_isDown, isDown) != isDown)
            levels.push_back(isDown);
    };
    // The device's answer is newer than every event of this read, so the key events that follow
    // in this read are ignored.
    bool isAsked = false;
    for (std::size_t i = 0; i < count; ++i) {
        const input_event& event = events[i];
        if (event.type == EV_SYN && event.code == SYN_DROPPED)
            m_isLost = true;
        else if (m_isLost && event.type == EV_SYN && event.code == SYN_REPORT) {
            m_isLost = false;
            if (!std::exchange(isAsked, true))
                reach(m_isDownNow());
        } else if (!m_isLost && !isAsked && event.type == EV_KEY && event.code == m_code)
            reach(event.value != 0); // 2: the key is held and repeats
    }
    return levels;
}

InputKey::InputKey(const std::string& device, std::optional<unsigned> code)
    : m_file(openFile(device, O_RDONLY | O_NONBLOCK | O_NOCTTY)),
      m_code(codeOf(device, m_file.number(), code)),
      m_events(device, m_file.number(), m_code,
               [this] { return KeySet::downOf(m_file.number()).has(m_code); }) {}

} // namespace board
