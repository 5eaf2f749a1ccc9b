#include "MxMsg.h"

namespace {

constexpr const char* TYPE_NAMES[] = {"NO VALUE", "TEXT", "BOOL", "INT", "UNSIGNED"};

} // namespace

template <class Value>
XCode MxMsg::read(Value& value) const {
    if (const Value* const held = std::get_if<Value>(&m_value)) {
        value = *held;
        return XCode();
    }
    const auto expected = decltype(m_value)(std::in_place_type<Value>).index();
    return XCode(XCode::FAILURE, String::format("MESSAGE %u CARRIES %s, EXPECTED %s", m_code,
                                                TYPE_NAMES[m_value.index()], TYPE_NAMES[expected]));
}

XCode MxMsg::get(String& value) const {
    return read(value);
}

XCode MxMsg::get(bool& value) const {
    return read(value);
}

XCode MxMsg::get(int& value) const {
    return read(value);
}

XCode MxMsg::get(unsigned& value) const {
    return read(value);
}
