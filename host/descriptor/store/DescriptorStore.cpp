#include "descriptor/store/DescriptorStore.h"

#include <algorithm>

#include "base/Error.h"
#include "base/Text.h"
#include "descriptor/store/ImageBackup.h"
#include "descriptor/store/StateFolder.h"

namespace board {

namespace {

bool hasRoomBehind(const TagImage& image) {
    return image.isCorrupt() || image.bytes().size() > image.usedBytes();
}

/// The new content of an image file. A file with room after its terminator, such as a dump of a
/// whole device, keeps its size.
std::string fileContent(const TagImage& old, std::string image) {
    constexpr char ERASED = '\xFF';
    const std::string& former = old.bytes();
    const std::size_t used = old.isCorrupt() ? former.size() : old.usedBytes();
    if (!hasRoomBehind(old))
        return image;
    const char blank = former.size() > used && former.back() == '\0' ? '\0' : ERASED;
    if (image.size() < used)
        image.resize(used, blank);
    if (image.size() < former.size())
        image += former.substr(image.size());
    return image;
}

/// The bytes that a write stores from the start of the target. A file will hold nothing else.
std::string writtenContent(const DescriptorTarget& target, const std::string& image,
                           const std::optional<char>& fill) {
    const std::string& former = target.old().bytes();
    std::string content = image;
    if (former.size() <= image.size())
        return content;
    if (fill)
        content.resize(former.size(), *fill);
    else if (!target.isDevice() && hasRoomBehind(target.old()))
        content += former.substr(image.size());
    return content;
}

void refuseWrongSizes(const std::string& path, const std::vector<TagChange>& changes) {
    std::vector<std::string> wrong;
    for (const TagChange& each : changes)
        if (each.wrongSize)
            wrong.push_back(tagName(each.after->id) + " would have " + *each.wrongSize);
    if (!wrong.empty())
        throw Error(path + ": " + join(wrong, ", ") +
                    "; nothing was written (--force writes it anyway)");
}

/// All bytes of the target after `content` has been written.
std::string afterwards(const DescriptorTarget& target, const std::string& content) {
    const std::string& old = target.old().bytes();
    const bool isLonger = target.isDevice() && old.size() > content.size();
    return content + (isLonger ? old.substr(content.size()) : "");
}

std::optional<RecordLine> recordOf(const StoreManner& manner, StoreOutcome written,
                                   const std::string& after) {
    if (!manner.record)
        return std::nullopt;
    written.result = StoreResult::WRITTEN;
    written.after = after;
    return RecordLine{manner.record->file, manner.record->line(written)};
}

/// A journal needs the state folder. A user who names the backup file may have no such folder.
bool canKeepJournal(const StoreManner& manner) {
    if (!manner.keepOld)
        return false;
    try {
        static_cast<void>(stateFolder());
        return true;
    } catch (const Error&) {
        return false; // if no backup was named, keepImage has thrown already
    }
}

void note(const DescriptorTarget& target, StoreOutcome& outcome) {
    outcome.isDevice = target.isDevice();
    outcome.isTorn = target.isTorn();
    outcome.before = target.found();
    outcome.after = outcome.before; // until something is written
    outcome.notes = target.notes();
}

void store(DescriptorTarget& target, const StoreManner& manner, const std::string& content,
           const Confirm& confirm, StoreOutcome& outcome) {
    if (manner.dryRun) {
        outcome.result = StoreResult::UNCHANGED;
        outcome.wouldWrite = true;
        return;
    }
    if (target.isDevice())
        confirm(outcome);
    if (manner.keepOld)
        outcome.backup =
            keepImage(target.old().bytes(), target.path(), target.access(), manner.backup);
    const std::string after = afterwards(target, content);
    outcome.after.reset();
    try {
        target.write(content, canKeepJournal(manner), outcome.backup,
                     recordOf(manner, outcome, after), outcome.result);
    } catch (const Error&) {
        try {
            outcome.after = target.content();
        } catch (const Error&) { // the first failure is reported
        }
        throw;
    }
    outcome.after = after;
}

} // namespace

void editDescriptor(const DescriptorSource& source, const StoreManner& manner,
                    const std::function<void(DescriptorEdit&)>& step, const Confirm& confirm,
                    StoreOutcome& outcome) {
    DescriptorTarget target(source, manner.dryRun);
    note(target, outcome);
    DescriptorEdit edit(target.old());
    const TagImage& old = edit.original();
    if (old.isCorrupt() && !manner.force)
        throw Error(*old.fault() +
                    " (nothing was changed; --force keeps the tags before the fault)");
    step(edit);
    outcome.changes = edit.changes();
    outcome.image = edit.image();
    if (!manner.force)
        refuseWrongSizes(target.path(), outcome.changes);
    if (outcome.changes.empty() && !target.isTorn()) {
        outcome.result = StoreResult::UNCHANGED;
        return;
    }
    const std::string content = outcome.isDevice ? outcome.image : fileContent(old, outcome.image);
    target.expectRoom(content);
    store(target, manner, content, confirm, outcome);
}

void writeDescriptor(const DescriptorSource& source, const StoreManner& manner,
                     const TagImage& image, const Confirm& confirm, StoreOutcome& outcome) {
    outcome.image = terminated(image);
    DescriptorTarget target(source, manner.dryRun);
    note(target, outcome);
    target.expectRoom(outcome.image);
    const std::string content = writtenContent(target, outcome.image, manner.fill);
    const std::string& former = target.found();
    const bool isInPlace =
        target.isDevice() ? former.compare(0, content.size(), content) == 0 : former == content;
    if (isInPlace && !target.isTorn()) {
        outcome.result = StoreResult::UNCHANGED;
        return;
    }
    store(target, manner, content, confirm, outcome);
}

std::string terminated(const TagImage& image) {
    return image.bytes().substr(0, image.terminator().value_or(image.usedBytes())) +
           imageOf({BD::Tag(TERMINATOR_TAG)});
}

} // namespace board
