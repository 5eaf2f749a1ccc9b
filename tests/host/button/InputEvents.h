#pragma once

#include <initializer_list>
#include <string>

#include <linux/input.h>

#include "support/TempDir.h"
#include "support/WrittenPipe.h"

namespace support {

/// Imitates an input device: a pipe with event records in this machine's layout.
class InputEvents {
public:
    struct Event {
        unsigned short type;
        unsigned short code;
        int value;
    };
    static constexpr unsigned short KEY = 148;
    static constexpr Event DOWN{EV_KEY, KEY, 1};
    static constexpr Event UP{EV_KEY, KEY, 0};
    static constexpr Event REPEAT{EV_KEY, KEY, 2};
    static constexpr Event REPORT{EV_SYN, SYN_REPORT, 0};
    static constexpr Event DROPPED{EV_SYN, SYN_DROPPED, 0};

    explicit InputEvents(const TempDir& dir)
        : m_pipe(dir), m_reader(::open(m_pipe.path().c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {}
    ~InputEvents() { ::close(m_reader); }
    InputEvents(const InputEvents&) = delete;
    InputEvents& operator=(const InputEvents&) = delete;

    int descriptor() const { return m_reader; }

    void give(std::initializer_list<Event> events) const {
        std::string bytes;
        for (const Event& event : events) {
            input_event record{};
            record.type = event.type;
            record.code = event.code;
            record.value = event.value;
            bytes.append(reinterpret_cast<const char*>(&record), sizeof record);
        }
        m_pipe.write(bytes);
    }

private:
    const WrittenPipe m_pipe;
    const int m_reader;
};

} // namespace support
