#pragma once

#include <optional>
#include <string>
#include <utility>

#include "base/files/FileLock.h"
#include "descriptor/TagImage.h"

namespace board {

/// Throws Error if `path` is neither a regular file nor a block device, because reading anything
/// else may never end. Also throws if the file or device is larger than MAX_IMAGE_SIZE: it is read
/// into memory as a whole, so a disk named by mistake must be rejected. A device that is missing or
/// can't be opened passes.
void expectDescriptorDevice(const std::string& path);

/// Where a descriptor's image is stored: in a file or device that a user names, or in a board's
/// device.
class DescriptorSource {
public:
    /// An image file, a pipe, or a device that the user named by its path.
    static DescriptorSource ofFile(const std::string& path);

    /// An image on standard input. It can be loaded only once and can't be edited.
    static DescriptorSource ofStandardInput();

    /// The device that a board's profile names. An ordinary file named there is treated as a device
    /// too. The device is read `readChunk` bytes at a time. An image must be smaller than `size`
    /// bytes. Throws Error if the device can't be read or `expectDescriptorDevice` rejects it.
    static DescriptorSource ofBoard(const std::string& path, unsigned readChunk, unsigned size);

    /// Empty for standard input.
    const std::string& path() const { return m_path; }
    bool isDevice() const;
    bool isBoardDevice() const { return m_device.has_value(); }

    /// The size in bytes of the device that `image` was read from; an image must be smaller.
    std::size_t deviceSize(const TagImage& image) const;

    /// Sets how long a load or a change waits for the lock of the file or device, and who is told
    /// about the wait. By default, LockWait's default time applies and nobody is told.
    void waitForLock(LockWait wait) { m_wait = std::move(wait); }
    const LockWait& lockWait() const { return m_wait; }

    /// Reads under a shared lock, so it never reads a half-written image. Standard input, a pipe
    /// and a character device are not locked.
    ///
    /// Throws Error if the bytes can't be read or the lock is not free in time, or if a file or
    /// standard input has more than MAX_IMAGE_SIZE bytes. The size of a board's device is not
    /// checked here: `ofBoard` has checked it, and the driver reads no more than `size` bytes. A
    /// corrupt image is not a failure.
    TagImage load() const;

private:
    struct BoardDevice {
        unsigned readChunk;
        unsigned size;
    };
    DescriptorSource(std::string path, std::optional<BoardDevice> device);

    std::string m_path; ///< empty: standard input
    std::optional<BoardDevice> m_device;
    LockWait m_wait;
};

} // namespace board
