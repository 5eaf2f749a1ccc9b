#include "support/TempDir.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include <sys/stat.h>

namespace fs = std::filesystem;

namespace support {

TempDir::TempDir() : m_path((fs::temp_directory_path() / "board-test-XXXXXX").string()) {
    if (!::mkdtemp(m_path.data()))
        throw std::system_error(errno, std::generic_category(), m_path);
}

TempDir::~TempDir() {
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
}

void TempDir::write(const std::string& name, const std::string& bytes) const {
    std::ofstream file(path(name), std::ios::binary);
    file << bytes;
    file.close();
    if (!file)
        throw std::system_error(errno, std::generic_category(), path(name));
}

std::string TempDir::read(const std::string& name) const {
    std::ifstream file(path(name), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

void TempDir::makePipe(const std::string& name) const {
    if (::mkfifo(path(name).c_str(), 0600) != 0)
        throw std::system_error(errno, std::generic_category(), path(name));
}

void TempDir::makeFolder(const std::string& name) const {
    fs::create_directories(path(name));
}

} // namespace support
