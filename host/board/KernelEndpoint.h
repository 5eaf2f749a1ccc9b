#pragma once

#include <vector>

#include "KernelMessage.h"
#include "MxMsg.h"

namespace board {

/// The kernel driver's end of a message channel, for as long as this object lives: answers each
/// code with a fixed message, and no other code.
class KernelEndpoint {
public:
    /// Throws Error where the name is published already.
    KernelEndpoint(const String& name, std::vector<MxMsg> answers);
    ~KernelEndpoint();
    KernelEndpoint(const KernelEndpoint&) = delete;
    KernelEndpoint& operator=(const KernelEndpoint&) = delete;

private:
    const String m_name;
};

/// An answer that carries `value`.
template <class Value>
MxMsg answer(KernelMessage code, const Value& value) {
    MxMsg message(code);
    message.set(value);
    return message;
}

} // namespace board
