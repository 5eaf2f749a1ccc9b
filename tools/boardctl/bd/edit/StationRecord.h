#pragma once

#include <optional>
#include <string>

#include "base/FileReplacement.h"
#include "descriptor/store/DescriptorStore.h"

namespace boardctl {

/// The file to which a station appends one JSON line for each write.
class StationRecord {
public:
    /// Opens the file, or does nothing if `file` is empty. Throws board::Error if a record could
    /// not be kept, so that nothing is written then.
    void open(const std::string& file);

    /// The time, the device, the SHA-256 of all its bytes before and after, the serial number and
    /// addresses of the image if it holds any, the result, and an error if there is one.
    static std::string line(const std::string& device, const board::StoreOutcome& outcome,
                            const std::string& error);

    /// Appends that line, except after a write: the store has then appended it. Throws board::Error
    /// on failure. Does nothing if no file is open.
    void append(const std::string& device, const board::StoreOutcome& outcome,
                const std::string& error) const;

private:
    std::optional<board::LineFile> m_file;
};

} // namespace boardctl
