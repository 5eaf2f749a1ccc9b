#pragma once

#include <string>

#include "base/FileReplacement.h"
#include "descriptor/DescriptorSource.h"
#include "descriptor/TagImage.h"
#include "descriptor/store/WriteJournal.h"

namespace board {

/// How a change of a descriptor ended.
enum class StoreResult {
    UNCHANGED, ///< nothing had to be written, or nothing was allowed to be
    WRITTEN,   ///< the new image is in place and was read back
    RESTORED,  ///< the write failed, and the old image is in place again
    FAILED,    ///< it failed before or after something was written; the message tells which
    DECLINED   ///< the user said no
};

/// The file or device of a descriptor, locked for one change. One thread.
class DescriptorTarget {
public:
    /// Waits for the lock as `source` tells, and reads the bytes. Throws Error for character
    /// devices and everything that can't be locked or read. With `isReading`, nothing will be
    /// written.
    DescriptorTarget(const DescriptorSource& source, bool isReading);

    const std::string& path() const { return m_path; }
    /// Whether it is written in place; a file is replaced.
    bool isDevice() const { return m_file.isInPlace(); }
    FileAccess access() const { return m_file.access(); }

    /// Its bytes as they were found.
    const std::string& found() const { return m_found; }
    /// The image before this change. After an interrupted write, this is what it held before
    /// that one.
    const TagImage& old() const { return m_old; }
    /// Whether an earlier write to the device was interrupted, so that it holds neither image whole
    /// and must be written even if the tags do not change.
    bool isTorn() const { return m_journals.unfinished.has_value(); }
    /// Messages about earlier writes, whose records were completed or can't be.
    const std::vector<std::string>& notes() const { return m_journals.notes; }

    /// Throws Error if `content` is too large.
    void expectRoom(const std::string& content) const;

    /// Writes `content` from the start. A file holds nothing else afterwards; on a device, the
    /// bytes behind stay. A device is read back, and written with the old image if it holds
    /// something else. Then appends `record`, if there is one. `keepsJournal` makes the next run
    /// repair a device, or append the record, if this one is interrupted; `backup` is named in
    /// messages. `result` tells how it ended, also if it throws.
    void write(const std::string& content, bool keepsJournal, const std::string& backup,
               const std::optional<RecordLine>& record, StoreResult& result);

    /// What it holds now. Throws Error if it can't be read.
    std::string content() const { return m_file.content(MAX_IMAGE_SIZE); }

private:
    void program(const std::string& content, const std::string& backup, StoreResult& result);
    bool holds(const std::string& expected) const;

    const DescriptorSource& m_source;
    const std::string& m_path;
    FileReplacement m_file;
    const std::string m_found;
    const JournalFindings m_journals;
    const TagImage m_old;
};

} // namespace board
