#pragma once

#include <fcntl.h>
#include <unistd.h>

/// A driver's device file, open for one operation. The destructor closes the file, even if an
/// exception is thrown meanwhile.
class DeviceDescriptor {
public:
    DeviceDescriptor(const char* path, int flags) : m_number(::open(path, flags)) {}
    ~DeviceDescriptor() {
        if (m_number >= 0)
            ::close(m_number);
    }
    DeviceDescriptor(const DeviceDescriptor&) = delete;
    DeviceDescriptor& operator=(const DeviceDescriptor&) = delete;

    /// The descriptor's number; negative if the file can't be opened.
    int number() const { return m_number; }

private:
    const int m_number;
};
