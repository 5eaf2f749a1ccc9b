#include "CBoardDescr.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "ByteOrder.h"
#include "DeviceDescriptor.h"
#include "ImageCursor.h"

// The image of the tag list, and the device file that holds it.

namespace {

constexpr unsigned HEADER_BYTES = 4;
constexpr unsigned END_CLEARED = 0x0000;
constexpr unsigned END_ERASED = 0xFFFF;

constexpr char TOO_SMALL[] =
    "CORRUPTED BOARD DESCRIPTOR: id=%u has invalid field length (chunkLen=%u is too "
    "small) at pos=%u";
constexpr char OVERFLOWS[] =
    "CORRUPTED BOARD DESCRIPTOR: id=%u has invalid field length (len=%u overflow the "
    "buffer size %u) at pos=%u";
constexpr char OPEN_FAILED[] = "FAILED TO OPEN DEVICE '%s'";
constexpr char READ_FAILED[] = "FAILED TO READ DEVICE '%s'";
constexpr char WRITE_FAILED[] = "FAILED TO WRITE DEVICE '%s'";
constexpr char IMAGE_TOO_LARGE[] = "FAILED TO WRITE DEVICE '%s': DEV SIZE=%d, BD SIZE=%d";

unsigned paddingOf(const BD::Tag& tag) {
    return tag.length % 2;
}

} // namespace

XCode CBoardDescr::importBD(const TString<char>& image, String& error) {
    // Copied first, because `image` may be the data of a tag in this list.
    const TString<char> held(image); // NOLINT(performance-unnecessary-copy-initialization)
    m_tags.clear();
    ImageCursor cursor(held);
    while (cursor.hasChunk()) {
        const unsigned start = cursor.position();
        const unsigned id = cursor.takeUInt16();
        if (id == END_CLEARED || id == END_ERASED) {
            m_tags.append(BD::Tag(0));
            return XCode();
        }
        const unsigned chunkLength = cursor.takeUInt16();
        if (chunkLength < HEADER_BYTES) {
            error = String::format(TOO_SMALL, id, chunkLength, start + 2);
            return XCode(XCode::FAILURE);
        }
        const unsigned dataLength = chunkLength - HEADER_BYTES;
        const char* const data = cursor.takeBytes(dataLength);
        if (!data) {
            error = String::format(OVERFLOWS, id, dataLength, cursor.size(), start + HEADER_BYTES);
            return XCode(XCode::FAILURE);
        }
        const TagList::Iterator tag = m_tags.emplace(m_tags.end(), static_cast<BD::TagId>(id));
        try {
            tag->data.concat(data, dataLength);
        } catch (const std::bad_alloc&) {
            m_tags.remove(tag); // otherwise the list would gain an empty tag
            throw;
        }
        tag->length = dataLength;
    }
    return XCode();
}

XCode CBoardDescr::exportBD(TString<char>& image, String&) {
    std::size_t size = 0;
    for (const BD::Tag& tag : m_tags)
        size += HEADER_BYTES + tag.data.length() + paddingOf(tag);
    std::vector<char> chunks(size); // all zero, so no padding has to be written
    char* out = chunks.data();
    for (const BD::Tag& tag : m_tags) {
        const unsigned chunkLength = HEADER_BYTES + tag.length + paddingOf(tag);
        uint16_htonc(static_cast<unsigned short>(tag.id), out, 2);
        uint16_htonc(static_cast<unsigned short>(chunkLength), out + 2, 2);
        out = std::copy_n(tag.data.data(), tag.data.length(), out + HEADER_BYTES) + paddingOf(tag);
    }
    image.concat(chunks.data(), static_cast<unsigned>(size));
    return XCode();
}

XCode CBoardDescr::readBD(String& error) {
    TString<char> image;
    XCode status = readRawBD(image, error);
    return status.isSuccess() ? importBD(image, error) : status;
}

XCode CBoardDescr::writeBD(String& error) {
    TString<char> image;
    XCode status = exportBD(image, error);
    return status.isSuccess() ? writeRawBD(image, error) : status;
}

XCode CBoardDescr::readRawBD(TString<char>& image, String& error) {
    if (!m_devicePath)
        return XCode(XCode::FAILURE);
    std::vector<char> chunk(m_readChunk);
    const DeviceDescriptor device(m_devicePath, O_RDONLY);
    if (device.number() < 0) {
        error = String::format(OPEN_FAILED, m_devicePath);
        return XCode(XCode::FAILURE);
    }
    ssize_t got;
    while ((got = ::read(device.number(), chunk.data(), chunk.size())) > 0)
        image.concat(chunk.data(), static_cast<unsigned>(got));
    if (got < 0) {
        error = String::format(READ_FAILED, m_devicePath);
        return XCode(XCode::FAILURE);
    }
    return XCode();
}

XCode CBoardDescr::writeRawBD(const TString<char>& image, String& error) {
    if (!m_devicePath)
        return XCode(XCode::FAILURE);
    if (m_deviceSize <= image.length()) {
        error = String::format(IMAGE_TOO_LARGE, m_devicePath, static_cast<int>(m_deviceSize),
                               static_cast<int>(image.length()));
        return XCode(XCode::FAILURE);
    }
    const DeviceDescriptor device(m_devicePath, O_WRONLY);
    if (device.number() < 0) {
        error = String::format(OPEN_FAILED, m_devicePath);
        return XCode(XCode::FAILURE);
    }
    // Written in one call: an interruption between two calls would leave the EEPROM half written.
    const ssize_t written = ::write(device.number(), image.data(), image.length());
    if (written < 0) {
        error = String::format(WRITE_FAILED, m_devicePath);
        return XCode(XCode::FAILURE);
    }
    return XCode();
}
