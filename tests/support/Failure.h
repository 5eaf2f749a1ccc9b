#pragma once

#include <string>

#include "base/Error.h"

namespace support {

/// The message of the Error that `call` throws.
template <class Call>
std::string failureOf(Call call) {
    try {
        call();
    } catch (const board::Error& error) {
        return error.what();
    }
    return "no failure";
}

} // namespace support
