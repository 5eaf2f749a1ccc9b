#include "button/InputKey.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <linux/input.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "base/Error.h"

namespace board {

namespace {

/// A bit for each code of a key.
class KeySet {
public:
    bool has(unsigned code) const {
        return code <= KEY_MAX && (m_bits[code / BITS] >> (code % BITS) & 1) != 0;
    }

    /// The keys that the device has.
    static KeySet of(const std::string& device, int file) {
        KeySet keys;
        if (::ioctl(file, EVIOCGBIT(EV_KEY, sizeof m_bits), keys.m_bits.data()) < 0)
            throw Error(device + ": is no input device (expected one such as /dev/input/event0)");
        return keys;
    }

    /// Those that are down; none where the device can't tell any more.
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
    static constexpr unsigned BITS = 8 * sizeof(unsigned long); // the kernel's words

    std::array<unsigned long, KEY_MAX / BITS + 1> m_bits{};
};

unsigned codeOf(const std::string& device, int file, std::optional<unsigned> wanted) {
    const KeySet keys = KeySet::of(device, file);
    const std::vector<unsigned> codes = keys.codes();
    if (wanted ? keys.has(*wanted) : codes.size() == 1)
        return wanted.value_or(codes.front());
    std::string list;
    for (const unsigned code : codes)
        list += (list.empty() ? "" : ", ") + std::to_string(code);
    if (codes.empty())
        throw Error(device + ": has no keys");
    throw Error(device + ": has " +
                (wanted ? "no key " + std::to_string(*wanted) : "several keys") +
                " (expected one of the codes " + list + ")");
}

} // namespace

KeyEvents::KeyEvents(std::string name, int descriptor, unsigned code,
                     std::function<bool()> isDownNow)
    : m_name(std::move(name)), m_descriptor(descriptor), m_code(code),
      m_isDownNow(std::move(isDownNow)), m_isDown(m_isDownNow()) {}

std::vector<bool> KeyEvents::read() {
    std::array<input_event, 64> events;
    const ssize_t got = ::read(m_descriptor, events.data(), sizeof events);
    if (got < 0 && (errno == EAGAIN || errno == EINTR))
        return {};
    if (got < 0)
        throw Error(m_name + ": can't read" + (errno == ENODEV ? ", the device is gone: " : ": ") +
                    std::strerror(errno));
    const auto count = static_cast<std::size_t>(got) / sizeof(input_event);
    if (count == 0)
        throw Error(m_name + ": gives no events any more");

    std::vector<bool> levels;
    const auto reach = [&](bool isDown) {
        if (std::exchange(m_isDown, isDown) != isDown)
            levels.push_back(isDown);
    };
    // The answer is newer than all that was read, and took what waited of the key with it.
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
            reach(event.value != 0); // 2 is the repeat of a key that is down
    }
    return levels;
}

InputKey::File::File(const std::string& path)
    : number(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)) {
    if (number < 0)
        throw Error(path + ": can't open: " + std::strerror(errno));
}

InputKey::File::~File() {
    ::close(number);
}

InputKey::InputKey(const std::string& device, std::optional<unsigned> code)
    : m_file(device), m_code(codeOf(device, m_file.number, code)),
      m_events(device, m_file.number, m_code,
               [this] { return KeySet::downOf(m_file.number).has(m_code); }) {}

} // namespace board
