#pragma once

#include <cstdlib>
#include <string>

#include <unistd.h>

/// A new file below /tmp, removed with the object.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& content) {
        const int file = ::mkstemp(m_path.data());
        if (file < 0 ||
            ::write(file, content.data(), content.size()) != static_cast<ssize_t>(content.size()))
            std::abort();
        ::close(file);
    }
    ~TemporaryFile() { ::unlink(m_path.c_str()); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    const char* path() const { return m_path.c_str(); }

private:
    std::string m_path = "/tmp/board-bench-XXXXXX";
};
