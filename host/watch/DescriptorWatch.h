#pragma once

#include <optional>
#include <string>

#include "base/Events.h"
#include "base/Result.h"
#include "profile/Profile.h"

namespace board {

/// Finds out whether somebody has changed the board descriptor on its device. Keeps the part of the
/// image that a load reads: at most 64 KiB.
class DescriptorWatch {
public:
    /// `profile` must outlive the object.
    explicit DescriptorWatch(const DescriptorProfile& profile) : m_profile(profile) {}

    /// Compares the device at `path` with what the previous call read there, and returns the
    /// change. Empty at the first call, and if nothing has changed. Loads the image only if its
    /// bytes differ. While another program holds the device's exclusive lock, because it is
    /// writing, leaves a change for a later call. A fault tells why the device can't be read.
    Result<std::optional<event::DescriptorChanged>> look(const std::string& path);

    /// The bytes that a load would read, as of the last successful `look`; null before the first
    /// one.
    const std::string* image() const { return m_seen ? &m_seen->bytes : nullptr; }

private:
    struct Seen {
        std::string bytes; ///< what a load reads
        bool isWhole;      ///< the device holds nothing else
    };

    const DescriptorProfile& m_profile;
    std::optional<Seen> m_seen; ///< empty before the device could be read
};

} // namespace board
