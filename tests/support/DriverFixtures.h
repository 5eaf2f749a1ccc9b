#pragma once

#include <array>
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
#include "InfoContainer.h"

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

/// The arguments of a report: maximum level, level, maximum index, index.
using Place = std::array<unsigned, 4>;

using Rows = std::vector<std::string>;

/// The rows of a report whose keys begin with "> ", each as "<level>.<index> <key>=<value>".
template <class Object>
Rows reportOf(const Object& object, const Place& at,
              decltype(&Object::getInfo) form = &Object::getInfo) {
    InfoContainer container;
    EXPECT_EQ(&(object.*form)(container, at[0], at[1], at[2], at[3], "> "), &container);
    Rows rows;
    for (const auto& row : container.getRows())
        rows.push_back(str(String::format("%u.%u ", row.level, row.index)) + str(row.key) + "=" +
                       str(row.value));
    return rows;
}

/// Queries a driver through each of its interfaces, for each of them and for one that it lacks,
/// with and without a place for the result. The driver's reference count must be 1.
template <class Interface, class Driver>
void expectFaces(Driver& object) {
    Interface* const own = &object;
    IDriver* const driver = &object;
    IInfo* info = nullptr; // that of the base class; ILedControl has another one
    if constexpr (std::is_base_of_v<CKernelDriver, Driver>)
        info = static_cast<CKernelDriver*>(&object);
    else
        info = &object;
    const std::pair<VELM_UUID, void*> faces[] = {
        {Interface::IID(), own},
        {VELM_UUID(Interface::IID().getValue(), "another representation"), own},
        {IUnknown::IID(), static_cast<IUnknown*>(driver)},
        {IDriver::IID(), driver},
        {IInfo::IID(), info},
        {VELM_UUID({}, "unknown"), nullptr}};
    for (IUnknown* const way : {static_cast<IUnknown*>(own), static_cast<IUnknown*>(info),
                                static_cast<IUnknown*>(driver)})
        for (const auto& [iid, expected] : faces) {
            SCOPED_TRACE(std::string(Interface::IID().getName()) + " for " + iid.getName());
            void* face = way;
            const XCode status = way->queryInterface(iid, &face);
            EXPECT_EQ(status.getCode(), expected ? 0 : -1);
            EXPECT_EQ(str(status.getMessage()), "");
            EXPECT_EQ(face, expected);
            EXPECT_EQ(way->queryInterface(iid, nullptr).isSuccess(), expected != nullptr);
            EXPECT_EQ(way->getLock(), object.getLock());
            EXPECT_EQ(way->addRef(), expected ? 3U : 2U);
            while (way->release() > 1) {
            }
        }
}

/// Keeps descriptor 0 closed while it lives, so that the next file to be opened gets that number.
/// Afterwards descriptor 0 is /dev/null, because no test reads standard input.
struct DescriptorZeroFree {
    DescriptorZeroFree() { ::close(0); }
    ~DescriptorZeroFree() { ::open("/dev/null", O_RDONLY); }
    bool isStillFree() const { return ::fcntl(0, F_GETFD) < 0; }
};

} // namespace support
