#include "descriptor/store/DescriptorTarget.h"

#include <algorithm>
#include <optional>

#include "base/EndingSignals.h"
#include "base/Error.h"
#include "base/File.h"

namespace board {

namespace {

const std::string& checkedPath(const DescriptorSource& source) {
    if (kindOf(source.path()) == FileKind::CHARACTER_DEVICE)
        throw Error(source.path() +
                    ": is a character device (expected an image file or a block device)");
    return source.path();
}

JournalFindings journalsFor(const std::string& path, const std::string& bytes, bool isDevice,
                            bool isReading) {
    if (isReading)
        return {isDevice ? findUnfinished(path, bytes) : std::nullopt, {}};
    try {
        return readJournals(path, bytes, isDevice);
    } catch (const Error&) {
        if (isDevice)
            throw;
        return {}; // a file is replaced whole and needs no repair
    }
}

[[noreturn]] void refuseTooLarge(const std::string& path, std::size_t size,
                                 const std::string& expected) {
    throw Error(path + ": the image would have " + std::to_string(size) + " bytes (expected " +
                expected + ")");
}

} // namespace

DescriptorTarget::DescriptorTarget(const DescriptorSource& source, bool isReading)
    : m_source(source), m_path(checkedPath(source)),
      m_file(m_path,
             source.isBoardDevice() ? FileReplacement::Manner::IN_PLACE
                                    : FileReplacement::Manner::BY_KIND,
             source.lockWait()),
      m_found(content()), m_journals(journalsFor(m_path, m_found, isDevice(), isReading)),
      m_old(isTorn() ? m_journals.unfinished->old : m_found) {}

void DescriptorTarget::expectRoom(const std::string& content) const {
    const std::size_t room = m_source.deviceSize(m_old);
    if (isDevice() && content.size() >= room)
        refuseTooLarge(m_path, content.size(), "fewer than the device's " + std::to_string(room));
    if (content.size() > MAX_IMAGE_SIZE)
        refuseTooLarge(m_path, content.size(), "at most " + std::to_string(MAX_IMAGE_SIZE));
}

bool DescriptorTarget::holds(const std::string& expected) const {
    return content().compare(0, expected.size(), expected) == 0;
}

void DescriptorTarget::program(const std::string& content, const std::string& backup,
                               StoreResult& result) {
    std::string reason;
    try {
        m_file.commit(content);
        if (holds(content)) {
            result = StoreResult::WRITTEN;
            return;
        }
        reason = m_path + ": does not hold what was written";
    } catch (const Error& error) {
        reason = error.what();
    }
    const std::string former = m_old.bytes().substr(0, content.size());
    try {
        m_file.commit(former);
    } catch (const Error&) { // the check below is what counts
    }
    try {
        if (holds(former))
            result = StoreResult::RESTORED;
    } catch (const Error&) { // reported below
    }
    throw Error(reason +
                (result == StoreResult::RESTORED
                     ? "; the old image is in place again"
                     : "; THE OLD IMAGE COULD NOT BE WRITTEN BACK EITHER") +
                (backup.empty() ? "" : " and is kept in " + backup));
}

void DescriptorTarget::write(const std::string& content, bool keepsJournal,
                             const std::string& backup, const std::optional<RecordLine>& record,
                             StoreResult& result) {
    result = StoreResult::FAILED;
    const EndingSignalsHeld untilWritten;
    std::string bytes = content;
    const std::size_t tornSize = isTorn() ? m_journals.unfinished->image.size() : 0;
    if (m_old.bytes().size() > bytes.size() && tornSize > bytes.size())
        bytes += m_old.bytes().substr(bytes.size(), tornSize - bytes.size());
    std::optional<WriteJournal> journal;
    if (keepsJournal && (isDevice() || record))
        journal.emplace(m_path, UnfinishedWrite{m_old.bytes(), m_found, bytes, record});
    try {
        if (isDevice()) {
            program(bytes, backup, result);
        } else {
            m_file.commit(content);
            result = StoreResult::WRITTEN;
        }
    } catch (const Error& error) {
        const bool isOver = journal && (!isDevice() || result == StoreResult::RESTORED);
        throw Error(error.what() + (isOver ? journal->remove() : ""));
    }
    try {
        if (record)
            LineFile(record->file).append(record->line);
    } catch (const Error& error) { // if there is a journal, the next run appends the line
        throw Error(error.what() + ("; " + m_path + ": was written anyway"));
    }
    if (journal)
        if (const std::string left = journal->remove(); !left.empty())
            throw Error(m_path + ": was written" + left);
}

} // namespace board
