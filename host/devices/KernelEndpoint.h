#pragma once

#include <vector>

#include "KernelMessage.h"
#include "MxMsg.h"

namespace board {

/// The kernel driver's end of a message channel, published as long as this object lives. It answers
/// each code of `answers` with a fixed message and leaves other codes unanswered.
class KernelEndpoint {
public:
    /// Throws Error if the name is already published.
    KernelEndpoint(const String& name, std::vector<MxMsg> answers);
    ~KernelEndpoint();
    KernelEndpoint(const KernelEndpoint&) = delete;
    KernelEndpoint& operator=(const KernelEndpoint&) = delete;

private:
    const String m_name;
};

/// A message that answers `code` with `value`.
template <class Value>
MxMsg answer(KernelMessage code, const Value& value) {
    MxMsg message(code);
    message.set(value);
    return message;
}

} // namespace board
