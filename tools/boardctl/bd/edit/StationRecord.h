#pragma once

#include <optional>
#include <string>

#include "base/FileReplacement.h"
#include "descriptor/store/DescriptorStore.h"

namespace boardctl {

/// The file to which a station appends one JSON line for each write.
class StationRecord {
public:
    /// Opens the file, or does nothing if `file` is empty. Throws board::Error if the file can't be
    /// used, so that no descriptor is written without a record.
    void open(const std::string& file);

    /// A JSON object with the time, the device, the SHA-256 of all its bytes before and after, the
    /// result and, if there are any, the image's serial number and addresses, the backup's name and
    /// the error.
    static std::string line(const std::string& device, const board::StoreOutcome& outcome,
                            const std::string& error);

    /// Appends the result of `line`. Does nothing if no file is open, or if the image was written:
    /// `board::writeDescriptor` has then appended the line. Throws board::Error on failure.
    void append(const std::string& device, const board::StoreOutcome& outcome,
                const std::string& error) const;

private:
    std::optional<board::LineFile> m_file;
};

} // namespace boardctl
