#include "snapshot/Snapshot.h"

#include <cerrno>
#include <optional>

#include "base/Error.h"
#include "base/File.h"
#include "base/files/FileLock.h"
#include "board/Report.h"
#include "devices/DeviceValue.h"

namespace board {

namespace {

constexpr std::size_t MOST = std::size_t{1} << 20U;

/// The KEY in the place "FILE:LINE: KEY". FILE may contain the separator ": ", KEY can't.
std::string keyOf(const NamedPath& named) {
    const std::size_t separator = named.place.rfind(": ");
    return separator == std::string::npos ? named.place : named.place.substr(separator + 2);
}

/// Only the descriptor's device is locked: a host that drives an LED may keep the LED's file
/// locked.
enum class Locking { NONE, DESCRIPTOR };

Result<std::string> contentOf(const std::string& path, Locking locking) {
    switch (kindOf(path)) {
    case FileKind::MISSING:
        return Fault{path + ": can't open: " + reasonOf(errno)};
    case FileKind::CHARACTER_DEVICE: // may have no end
        return readContent(path);
    case FileKind::REGULAR:
    case FileKind::BLOCK_DEVICE:
        try {
            return locking == Locking::NONE ? readFile(path, MOST)
                                            : readLocked(path, MOST, {DESCRIPTOR_WAIT});
        } catch (const Error& error) {
            return Fault{error.what()};
        }
    case FileKind::PIPE:
        return contentOf(path + ".state", locking);
    default:
        return Fault{path + ": is not a file or a device"};
    }
}

class Collector {
public:
    explicit Collector(const DeviceLocator& locator) : m_locator(locator.readingOnce()) {}

    void add(const NamedPath& named, Locking locking = Locking::NONE) {
        SnapshotFile file{keyOf(named), named.path};
        try {
            file.path = m_locator.locate(named.path);
            file.content = contentOf(file.path, locking);
        } catch (const Error& error) {
            file.content = Fault{error.what()};
        }
        m_files.push_back(std::move(file));
    }

    void add(const std::optional<NamedPath>& named) {
        if (named)
            add(*named);
    }

    template <class Entries>
    void addDevices(const Entries& entries) {
        for (const DeviceProfile& entry : entries)
            add(entry.device);
    }

    std::vector<SnapshotFile> take() { return std::move(m_files); }

private:
    const DeviceLocator m_locator;
    std::vector<SnapshotFile> m_files;
};

} // namespace

std::vector<SnapshotFile> snapshotFiles(const Profile& profile, const DeviceLocator& locator) {
    Collector files(locator);
    for (const FanProfile& fan : profile.fans) {
        files.add(fan.device);
        files.add(fan.enable);
        files.add(fan.tach);
    }
    files.addDevices(profile.thermals);
    files.addDevices(profile.powers);
    files.addDevices(profile.leds);
    if (profile.descriptor)
        files.add(profile.descriptor->device, Locking::DESCRIPTOR);
    files.add(profile.preferences);
    files.add(profile.firmware);
    if (profile.ledService)
        for (const LedSequencerProfile::File& file : profile.ledService->files)
            files.add(file.path);
    return files.take();
}

} // namespace board
