#include "descriptor/store/DescriptorStore.h"

#include "base/EndingSignals.h"
#include "base/Error.h"
#include "base/File.h"
#include "base/FileReplacement.h"
#include "descriptor/store/ImageBackup.h"

namespace board {

namespace {

void refuseCharacterDevice(const std::string& path) {
    if (kindOf(path) == FileKind::CHARACTER_DEVICE)
        throw Error(path + ": is a character device (expected an image file or a block device)");
}

[[noreturn]] void refuseTooLarge(const std::string& path, std::size_t size,
                                 const std::string& expected) {
    throw Error(path + ": the image would have " + std::to_string(size) + " bytes (expected " +
                expected + ")");
}

/// The new content of an image file. A dump of a whole device stays as large as the device.
std::string fileContent(const TagImage& old, std::string image) {
    constexpr char ERASED = '\xFF';
    const std::string& former = old.bytes();
    const std::size_t used = old.isCorrupt() ? former.size() : old.usedBytes();
    if (!old.isCorrupt() && former.size() == used)
        return image;
    const char blank = former.size() > used && former.back() == '\0' ? '\0' : ERASED;
    if (image.size() < used)
        image.resize(used, blank);
    if (image.size() < former.size())
        image += former.substr(image.size());
    return image;
}

/// Writes the image to a device and reads it back; if that fails, writes the old image back.
void program(FileReplacement& device, const std::string& path, const std::string& old,
             const std::string& image, const std::string& backup) {
    const auto holds = [&](const std::string& expected) {
        return device.content(MAX_IMAGE_SIZE).compare(0, expected.size(), expected) == 0;
    };
    std::string reason;
    try {
        device.commit(image);
        if (holds(image))
            return;
        reason = path + ": does not hold what was written";
    } catch (const Error& error) {
        reason = error.what();
    }
    const std::string former = old.substr(0, image.size());
    bool isRestored = false;
    try {
        device.commit(former);
    } catch (const Error&) { // only what the device now holds matters
    }
    try {
        isRestored = holds(former);
    } catch (const Error&) { // reported below
    }
    throw Error(reason +
                (isRestored ? "; the old image is in place again"
                            : "; THE OLD IMAGE COULD NOT BE WRITTEN BACK EITHER") +
                (backup.empty() ? "" : " and is kept in " + backup));
}

} // namespace

EditOutcome editDescriptor(const DescriptorSource& source, const EditManner& manner,
                           const std::function<void(DescriptorEdit&)>& step,
                           const std::function<void(const std::vector<TagChange>&)>& confirm) {
    const std::string& path = source.path();
    refuseCharacterDevice(path);
    FileReplacement target(path, source.isBoardDevice() ? FileReplacement::Manner::IN_PLACE
                                                        : FileReplacement::Manner::BY_KIND);
    DescriptorEdit edit(TagImage(target.content(MAX_IMAGE_SIZE)));
    const TagImage& old = edit.original();
    if (old.isCorrupt() && !manner.force)
        throw Error(*old.fault() +
                    " (nothing was changed; --force keeps the tags before the fault)");
    step(edit);

    EditOutcome outcome;
    outcome.isDevice = target.isInPlace();
    outcome.changes = edit.changes();
    if (outcome.changes.empty())
        return outcome;
    const std::string content = outcome.isDevice ? edit.image() : fileContent(old, edit.image());
    if (const std::size_t room = source.deviceSize(old); outcome.isDevice && content.size() >= room)
        refuseTooLarge(path, content.size(), "fewer than the device's " + std::to_string(room));
    if (content.size() > MAX_IMAGE_SIZE)
        refuseTooLarge(path, content.size(), "at most " + std::to_string(MAX_IMAGE_SIZE));
    if (manner.dryRun)
        return outcome;
    if (outcome.isDevice)
        confirm(outcome.changes);
    if (manner.keepOld)
        outcome.backup = keepImage(old.bytes(), path, manner.backup);
    const EndingSignalsHeld untilWritten;
    if (outcome.isDevice)
        program(target, path, old.bytes(), content, outcome.backup);
    else
        target.commit(content);
    outcome.isWritten = true;
    return outcome;
}

} // namespace board
