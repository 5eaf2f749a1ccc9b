#include "descriptor/DescriptorImage.h"

#include "base/File.h"

namespace board {

TString<char> readImage(const std::string& path) {
    const std::string bytes = readFile(path, MAX_IMAGE_SIZE);
    return TString<char>(bytes.data(), static_cast<unsigned>(bytes.size()));
}

} // namespace board
