#pragma once

#include "ByteOrder.h"
#include "TString.h"

/// Reads a descriptor image from front to back and never past its end.
class ImageCursor {
public:
    explicit ImageCursor(const TString<char>& image) : m_image(image) {}

    unsigned size() const { return m_image.length(); }
    unsigned position() const { return m_position; }

    /// Whether another chunk can begin here: at least the two bytes of its identifier must be left.
    bool hasChunk() const { return left() >= 2; }

    /// Consumes a 16-bit number; bytes past the end of the image count as 0.
    unsigned takeUInt16() {
        const char bytes[] = {m_image[m_position], m_image[m_position + 1]};
        m_position += left() < 2 ? left() : 2;
        return cntoh_uint16(bytes, 2);
    }

    /// Consumes `count` bytes and returns a pointer to them. If fewer bytes are left, returns null
    /// and consumes nothing.
    const char* takeBytes(unsigned count) {
        if (left() < count)
            return nullptr;
        const char* const bytes = m_image.data() + m_position;
        m_position += count;
        return bytes;
    }

private:
    unsigned left() const { return size() - m_position; }

    const TString<char>& m_image;
    unsigned m_position = 0;
};
