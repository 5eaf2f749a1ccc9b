#pragma once

#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "support/TempDir.h"

namespace support {

/// A pipe with a writer, so that opening it returns and reading it waits.
class WrittenPipe {
public:
    explicit WrittenPipe(const TempDir& dir) : m_path(dir.path("written")) {
        dir.makePipe("written");
        m_descriptor = ::open(m_path.c_str(), O_RDWR | O_CLOEXEC);
    }
    ~WrittenPipe() { ::close(m_descriptor); }
    WrittenPipe(const WrittenPipe&) = delete;
    WrittenPipe& operator=(const WrittenPipe&) = delete;
    const std::string& path() const { return m_path; }
    void write(const std::string& text) const {
        ASSERT_EQ(::write(m_descriptor, text.data(), text.size()),
                  static_cast<ssize_t>(text.size()));
    }

private:
    const std::string m_path;
    int m_descriptor;
};

} // namespace support
