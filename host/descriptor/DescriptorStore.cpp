#include "descriptor/DescriptorStore.h"

#include <algorithm>
#include <csignal>

#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>

#include "base/Error.h"
#include "base/File.h"
#include "base/FileReplacement.h"
#include "descriptor/DescriptorImage.h"
#include "descriptor/ImageBackup.h"

namespace board {

namespace {

/// While it lives, the signals by which people end a program wait: a device must not be left
/// between two images.
class EndingHeld {
public:
    EndingHeld() {
        sigset_t ending;
        sigemptyset(&ending);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT})
            sigaddset(&ending, signal);
        ::pthread_sigmask(SIG_BLOCK, &ending, &m_former);
    }
    ~EndingHeld() { ::pthread_sigmask(SIG_SETMASK, &m_former, nullptr); }
    EndingHeld(const EndingHeld&) = delete;
    EndingHeld& operator=(const EndingHeld&) = delete;

private:
    sigset_t m_former;
};

void refuseCharacterDevice(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) == 0 && S_ISCHR(status.st_mode))
        throw Error(path + ": is a character device (expected an image file or a block device)");
}

/// Throws the library's message where the image does not fit the device; the device is not touched.
void expectToFit(const std::string& path, unsigned deviceSize, const TString<char>& image) {
    if (image.length() < deviceSize)
        return;
    String error;
    // An image that is too large is all that this refuses, and it does so before it opens the
    // device.
    static_cast<void>(CBoardDescr(path.c_str(), 1, deviceSize).writeRawBD(image, error));
    throw Error(error.c_str());
}

/// The new content of an image file. A dump of a whole device stays as large as the device.
std::string fileContent(const std::string& old, const DescriptorEdit& edit,
                        const TString<char>& image) {
    constexpr char ERASED = '\xFF';
    std::string content(image.data(), image.length());
    const std::size_t used = edit.usedBytes();
    if (!edit.fault().empty() || old.size() > used) {
        const std::size_t end = std::min(used, old.size());
        const char blank = old.size() > end && old.back() == '\0' ? '\0' : ERASED;
        if (content.size() < end)
            content.resize(end, blank);
        if (content.size() < old.size())
            content += old.substr(content.size());
    }
    return content;
}

/// Writes the image to a device and reads it back; where that fails, the old image is put back.
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
        reason = path + ": holds something else than what was written";
    } catch (const Error& error) {
        reason = error.what();
    }
    const std::string former = old.substr(0, image.size());
    bool isRestored = false;
    try {
        device.commit(former);
    } catch (const Error&) { // what counts is what the device holds
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

EditOutcome editDescriptor(const DescriptorPlace& place, const EditManner& manner,
                           const std::function<void(DescriptorEdit&)>& step,
                           const std::function<void(const std::vector<TagChange>&)>& confirm) {
    refuseCharacterDevice(place.path);
    FileReplacement target(place.path, place.boardDeviceSize ? FileReplacement::Manner::IN_PLACE
                                                             : FileReplacement::Manner::BY_KIND);
    const std::string old = target.content(MAX_IMAGE_SIZE);
    DescriptorEdit edit(old);
    if (!edit.fault().empty() && !manner.force)
        throw Error(edit.fault() +
                    " (nothing was changed; --force keeps the tags before the fault)");
    step(edit);

    EditOutcome outcome;
    outcome.isDevice = target.isInPlace();
    outcome.changes = edit.changes();
    if (outcome.changes.empty())
        return outcome;
    const TString<char> image = edit.image();
    if (outcome.isDevice)
        expectToFit(place.path, place.boardDeviceSize.value_or(static_cast<unsigned>(old.size())),
                    image);
    const std::string content = outcome.isDevice ? std::string(image.data(), image.length())
                                                 : fileContent(old, edit, image);
    if (content.size() > MAX_IMAGE_SIZE)
        throw Error(place.path + ": the image would have " + std::to_string(content.size()) +
                    " bytes (expected at most " + std::to_string(MAX_IMAGE_SIZE) + ")");
    if (manner.dryRun)
        return outcome;
    if (outcome.isDevice)
        confirm(outcome.changes);
    if (manner.keepOld)
        outcome.backup = keepImage(old, place.path, manner.backup);
    const EndingHeld held;
    if (outcome.isDevice)
        program(target, place.path, old, content, outcome.backup);
    else
        target.commit(content);
    outcome.isWritten = true;
    return outcome;
}

} // namespace board
