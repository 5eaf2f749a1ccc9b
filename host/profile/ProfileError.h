#pragma once

#include <string>
#include <utility>

#include "base/Error.h"

namespace board {

/// What is wrong with an entry of a profile, or with what the entry names.
struct ProfileFault {
    std::string place; ///< "FILE:LINE: KEY"
    std::string what;

    std::string text() const { return place + ": " + what; }
};

/// A profile that can't be used.
class ProfileError : public Error {
public:
    ProfileError(std::string file, ProfileFault fault)
        : Error(fault.text()), m_file(std::move(file)), m_fault(std::move(fault)) {}
    const std::string& file() const { return m_file; } ///< as the user named it
    const ProfileFault& fault() const { return m_fault; }

private:
    std::string m_file;
    ProfileFault m_fault;
};

} // namespace board
