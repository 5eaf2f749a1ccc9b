#pragma once

#include <string>

#include <gtest/gtest.h>

#include "descriptor/TagImage.h"
#include "support/DriverFixtures.h"
#include "support/Failure.h"

/// Descriptor images in hexadecimal, for the tests of this folder.
namespace support {

inline const std::string PRODUCT = "00 2D 00 08 12 34 AB CD ";
inline const std::string MAC_X = "00 01 00 0C 02 00 00 00 00 07 00 00 ";
inline const std::string MAC_Y = "00 01 00 0C 02 00 00 00 00 08 00 01 ";
inline const std::string ODD = "FF FE 00 07 01 02 03 "; // odd size: the library never writes it
inline const std::string END = "00 00 00 04 ";

inline std::string bytesOf(const std::string& digits) {
    const TString<char> bytes = fromHex(digits);
    return std::string(bytes.data(), bytes.length());
}
inline std::string hexOf(const std::string& bytes) {
    return toHex(TString<char>(bytes.data(), static_cast<unsigned>(bytes.size())));
}
inline board::TagImage imageOf(const std::string& digits) {
    return board::TagImage(bytesOf(digits));
}

} // namespace support
