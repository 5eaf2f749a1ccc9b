#pragma once

#include <variant>

#include "String.h"
#include "XCode.h"

/// A message on the kernel message channel: a code and at most one value of type text, bool, int or
/// unsigned.
class MxMsg {
public:
    explicit MxMsg(unsigned code = 0) : m_code(code) {}

    unsigned getCode() const { return m_code; }

    void set(const String& value) { m_value = value; }
    void set(const char* value) { m_value = String(value); }
    void set(bool value) { m_value = value; }
    void set(int value) { m_value = value; }
    void set(unsigned value) { m_value = value; }

    bool hasValue() const { return m_value.index() != 0; }

    ///@{
    /// Read the value. If the message has a value of another type or no value, fail with "MESSAGE
    /// %u CARRIES %s, EXPECTED %s" and leave `value` unchanged.
    XCode get(String& value) const;
    XCode get(bool& value) const;
    XCode get(int& value) const;
    XCode get(unsigned& value) const;
    ///@}

private:
    template <class Value>
    XCode read(Value& value) const;

    unsigned m_code;
    std::variant<std::monostate, String, bool, int, unsigned> m_value;
};
