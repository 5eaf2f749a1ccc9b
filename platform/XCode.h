#pragma once

#include <cstdint>

class String;

/// The status that nearly every operation returns. Code 0 means success; code -1 means a failure
/// that has no more specific code. A status may carry a message.
///
/// A status is one machine word. Without a message, the word is the code shifted left by one with
/// the low bit set: success is the word 1, and code -1 is the word with all bits set. With a
/// message, or with a code outside -2^30..2^30-1, the word is a pointer to a record that this
/// object owns. Copying a status copies its record.
class [[nodiscard]] XCode {
public:
    static constexpr std::int32_t SUCCESS = 0;
    static constexpr std::int32_t FAILURE = -1;

    XCode() noexcept : m_word(1) {}
    explicit XCode(std::int32_t code);
    XCode(std::int32_t code, const String& message);
    XCode(const XCode& other);
    XCode(XCode&& other) noexcept;
    XCode& operator=(const XCode& other);
    XCode& operator=(XCode&& other) noexcept;
    ~XCode() {
        if (!isInline())
            dropRecord();
    }

    std::int32_t getCode() const noexcept;
    bool isSuccess() const noexcept { return m_word == 1 || getCode() == SUCCESS; }

    /// The message; the empty string if there is none. Valid until this object changes.
    const String& getMessage() const noexcept;

private:
    struct Record;
    bool isInline() const noexcept { return (m_word & 1U) != 0; }
    Record* record() const noexcept;
    void dropRecord() noexcept;

    std::uintptr_t m_word;
};
