#include "descriptor/DescriptorSource.h"

#include <fcntl.h>

#include "base/Error.h"
#include "base/File.h"

namespace board {

void expectDescriptorDevice(const std::string& path) {
    const FileKind kind = kindOf(path);
    if (kind != FileKind::MISSING && kind != FileKind::REGULAR && kind != FileKind::BLOCK_DEVICE)
        throw Error(path + ": is not a device file (expected a file or a block device)");
    const FileDescriptor file = tryOpen(path, O_RDONLY | O_NONBLOCK);
    const off_t size = file.isOpen() ? trySize(file) : -1;
    if (size > static_cast<off_t>(MAX_IMAGE_SIZE))
        throw Error(path + ": has " + std::to_string(size) +
                    " bytes (expected a descriptor's device of at most " +
                    std::to_string(MAX_IMAGE_SIZE) + ")");
}

DescriptorSource::DescriptorSource(std::string path, std::optional<BoardDevice> device)
    : m_path(std::move(path)), m_device(device) {}

DescriptorSource DescriptorSource::ofFile(const std::string& path) {
    return DescriptorSource(path, std::nullopt);
}

DescriptorSource DescriptorSource::ofStandardInput() {
    return DescriptorSource("", std::nullopt);
}

DescriptorSource DescriptorSource::ofBoard(const std::string& path, unsigned readChunk,
                                           unsigned size) {
    expectDescriptorDevice(path);
    expectReadable(path);
    return DescriptorSource(path, BoardDevice{readChunk, size});
}

bool DescriptorSource::isDevice() const {
    return m_device || board::isDevice(m_path);
}

std::size_t DescriptorSource::deviceSize(const TagImage& image) const {
    return m_device ? m_device->size : image.bytes().size();
}

TagImage DescriptorSource::load() const {
    if (!m_device)
        return TagImage(m_path.empty() ? readStandardInput(MAX_IMAGE_SIZE)
                                       : readLocked(m_path, MAX_IMAGE_SIZE, m_wait));
    const FileDescriptor locked = openLocked(m_path, m_wait); // the driver does not lock
    TString<char> bytes;
    String error;
    CBoardDescr driver(m_path.c_str(), m_device->readChunk, m_device->size);
    if (!driver.readRawBD(bytes, error).isSuccess())
        throw Error(error.c_str());
    return TagImage(std::string(bytes.data(), bytes.length()));
}

} // namespace board
