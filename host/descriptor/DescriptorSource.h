#pragma once

#include <optional>
#include <string>

#include "descriptor/TagImage.h"

namespace board {

/// Throws Error if the device may have no end, or is too large: it is read into memory as a whole,
/// so a disk named by mistake must be rejected. A device that is missing or can't be opened passes.
void expectDescriptorDevice(const std::string& path);

/// Where a descriptor's image is stored: in a file or device that a user names, or in a board's
/// device.
class DescriptorSource {
public:
    /// An image file, a pipe, or a device named as one would name a file.
    static DescriptorSource ofFile(const std::string& path);

    /// A board's device; an ordinary file is treated as a device too. It is read `readChunk` bytes
    /// at a time, and an image must be smaller than `size` bytes. Throws Error if it can't be read
    /// or is not a descriptor's device.
    static DescriptorSource ofBoard(const std::string& path, unsigned readChunk, unsigned size);

    const std::string& path() const { return m_path; }
    bool isDevice() const;
    bool isBoardDevice() const { return m_device.has_value(); }

    /// The size of the device of `image` in bytes; an image must be smaller.
    std::size_t deviceSize(const TagImage& image) const;

    /// Throws Error if the bytes can't be read, or if a file has more than MAX_IMAGE_SIZE bytes. A
    /// board's device has no such check here: `ofBoard` has checked its size, and the driver reads
    /// no more than `size` bytes. A corrupt image is not a failure.
    TagImage load() const;

private:
    struct BoardDevice {
        unsigned readChunk;
        unsigned size;
    };
    DescriptorSource(std::string path, std::optional<BoardDevice> device);

    std::string m_path;
    std::optional<BoardDevice> m_device;
};

} // namespace board
