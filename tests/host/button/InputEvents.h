#pragma once

#include <initializer_list>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/input.h>
#include <unistd.h>

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

    InputEvents() { EXPECT_EQ(::pipe2(m_ends, O_NONBLOCK | O_CLOEXEC), 0); }
    ~InputEvents() {
        ::close(m_ends[0]);
        ::close(m_ends[1]);
    }
    InputEvents(const InputEvents&) = delete;
    InputEvents& operator=(const InputEvents&) = delete;

    int descriptor() const { return m_ends[0]; }

    void give(std::initializer_list<Event> events) const {
        for (const Event& event : events) {
            input_event record{};
            record.type = event.type;
            record.code = event.code;
            record.value = event.value;
            EXPECT_EQ(::write(m_ends[1], &record, sizeof record), ssize_t{sizeof record});
        }
    }

private:
    int m_ends[2];
};

} // namespace support
