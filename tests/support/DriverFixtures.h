#pragma once

#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "CBoardDescr.h"
#include "CKernelDriver.h"

/// Helpers for the tests of several drivers.
namespace support {

/// Converts pairs of hexadecimal digits, separated by blanks, to bytes.
inline TString<char> fromHex(const std::string& digits) {
    TString<char> bytes;
    std::istringstream pairs(digits);
    for (unsigned value = 0; pairs >> std::hex >> value;) {
        const char byte = static_cast<char>(value);
        bytes.concat(&byte, 1);
    }
    return bytes;
}

inline std::string toHex(const TString<char>& bytes) {
    String digits;
    for (unsigned i = 0; i < bytes.length(); ++i)
        digits.concatf(i ? " %02X" : "%02X", static_cast<unsigned char>(bytes[i]));
    return digits.c_str();
}

/// Keeps every byte, so that a comparison includes zero bytes.
inline std::string str(const String& text) {
    return std::string(text.c_str(), text.length());
}

/// The tags in order, each formatted as "<id>/<length>:<data>", such as "45/2:12 34".
inline std::vector<std::string> tagsOf(const CBoardDescr& board) {
    std::vector<std::string> tags;
    for (const BD::Tag& tag : board.getTags())
        tags.push_back(std::to_string(tag.id) + "/" + std::to_string(tag.length) + ":" +
                       toHex(tag.data));
    return tags;
}

inline void expectPlainFailure(const XCode& status) {
    EXPECT_EQ(status.getCode(), -1);
    EXPECT_EQ(str(status.getMessage()), "");
}

/// An interface and its address; null if the object does not have it.
using Face = std::pair<VELM_UUID, void*>;

/// Queries a driver with the count 1 for each of the framework's interfaces and of `faces`, through
/// its own interface and the framework's, with and without a place for the result.
template <class Driver, class Own>
void expectFaces(Driver& object, Own& own, std::vector<Face> faces) {
    IDriver* const driver = &object;
    IInfo* info = nullptr; // the base class's: the LED driver's own interface has another
    if constexpr (std::is_base_of_v<CKernelDriver, Driver>)
        info = static_cast<CKernelDriver*>(&object);
    else
        info = &object;
    IUnknown* const unknown = driver;
    faces.insert(faces.end(),
                 {{IUnknown::IID(), unknown}, {IDriver::IID(), driver}, {IInfo::IID(), info}});
    for (IUnknown* const way :
         {static_cast<IUnknown*>(&own), static_cast<IUnknown*>(info), unknown})
        for (const auto& [iid, expected] : faces) {
            void* face = way;
            const XCode status = way->queryInterface(iid, &face);
            EXPECT_EQ(status.getCode(), expected ? 0 : -1) << iid.getName();
            EXPECT_EQ(str(status.getMessage()), "") << iid.getName();
            EXPECT_EQ(face, expected) << iid.getName();
            EXPECT_EQ(way->queryInterface(iid, nullptr).isSuccess(), expected != nullptr)
                << iid.getName();
            EXPECT_EQ(way->getLock(), object.getLock());
            EXPECT_EQ(way->addRef(), expected ? 3U : 2U) << iid.getName();
            while (way->release() > 1) {
            }
        }
}

/// An identifier formatted as "<name> <its bytes in memory>".
inline std::string published(const VELM_UUID& identifier) {
    const auto* const bytes = reinterpret_cast<const char*>(identifier.getValue().bytes);
    return identifier.getName() + (" " + toHex(TString<char>(bytes, 16)));
}

/// Closes descriptor 0 while it lives, so that the next file to be opened gets it.
class DescriptorZeroFree {
public:
    DescriptorZeroFree() : m_saved(::dup(0)) { ::close(0); }
    ~DescriptorZeroFree() {
        if (m_saved >= 0) {
            ::dup2(m_saved, 0);
            ::close(m_saved);
        }
    }
    DescriptorZeroFree(const DescriptorZeroFree&) = delete;
    DescriptorZeroFree& operator=(const DescriptorZeroFree&) = delete;

    bool isStillFree() const { return ::fcntl(0, F_GETFD) < 0; }

private:
    const int m_saved;
};

} // namespace support
