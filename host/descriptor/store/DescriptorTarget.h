#pragma once

#include <string>

#include "base/FileReplacement.h"
#include "descriptor/DescriptorSource.h"
#include "descriptor/TagImage.h"
#include "descriptor/store/WriteJournal.h"

namespace board {

/// How a change of a descriptor ended.
enum class StoreResult {
    UNCHANGED, ///< nothing had to be written, or it was a dry run
    WRITTEN,   ///< the new image is in place and was read back
    RESTORED,  ///< the write failed, and the old image is in place again
    FAILED,    ///< it failed before or after something was written, as the message tells
    DECLINED   ///< the user said no
};

/// The file or device of a descriptor, locked for one change. One thread.
class DescriptorTarget {
public:
    /// Waits for the lock as `source.lockWait()` states, and reads the bytes. Throws Error for
    /// character devices and everything that can't be locked or read. If `isReading`, nothing will
    /// be written, and the journals stay unchanged.
    DescriptorTarget(const DescriptorSource& source, bool isReading);

    const std::string& path() const { return m_path; }
    /// Whether the target is written in place; a file is replaced instead.
    bool isDevice() const { return m_file.isInPlace(); }
    FileAccess access() const { return m_file.access(); }

    /// Its bytes before this change.
    const std::string& found() const { return m_found; }
    /// The image before this change; if an earlier write was interrupted, the image before that
    /// write.
    const TagImage& old() const { return m_old; }
    /// Whether an earlier write to the device was interrupted, so that the device holds neither the
    /// old nor the new image whole and must be written even if the tags do not change.
    bool isTorn() const { return m_journals.unfinished.has_value(); }
    /// Messages about earlier writes that the record lacked: whether their lines could be added.
    const std::vector<std::string>& notes() const { return m_journals.notes; }

    /// Throws Error if `content` is too large.
    void expectRoom(const std::string& content) const;

    /// Writes `content` from the start. A file holds nothing else afterwards; on a device, the
    /// bytes after `content` stay. A device is read back; if it holds something else, the old image
    /// is written back. Then appends `record`, if there is one. If this run is interrupted and
    /// `keepsJournal` is set, the next run repairs the device or appends the record. `backup` is
    /// named in messages. `result` tells how the write ended, even if this throws.
    void write(const std::string& content, bool keepsJournal, const std::string& backup,
               const std::optional<RecordLine>& record, StoreResult& result);

    /// What the target holds now. Throws Error if it can't be read.
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
