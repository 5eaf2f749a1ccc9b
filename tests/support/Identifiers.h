#pragma once

#include "String.h"
#include "VELM_UUID.h"

namespace support {

/// The identifier's name and its bytes in memory order.
inline String shown(const VELM_UUID& identifier) {
    String text = String::format("%s ", identifier.getName());
    for (const unsigned byte : identifier.getValue().bytes)
        text.concatf("%02x", byte);
    return text;
}

} // namespace support
