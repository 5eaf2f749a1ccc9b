#pragma once

#include <string>

namespace support {

/// A temporary folder for one test, removed with the object.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    std::string path(const std::string& name) const { return m_path + "/" + name; }

    void write(const std::string& name, const std::string& bytes) const;
    std::string read(const std::string& name) const;
    void makePipe(const std::string& name) const;
    void makeFolder(const std::string& name) const;

private:
    std::string m_path;
};

} // namespace support
