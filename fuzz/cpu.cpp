// Any lines in the place of /proc/stat's: every sample is defined, and one that is refused changes no output.

#include <cstdlib>
#include <sstream>
#include <string>

#include "CpuLoad.h"

namespace {

class Meter : public CpuLoad {
public:
    using CpuLoad::measure;
    using CpuLoad::setup;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    std::istringstream lines(std::string(reinterpret_cast<const char*>(bytes), size));
    Meter meter;
    std::string line;
    if (std::getline(lines, line) && !line.empty())
        static_cast<void>(meter.setup(line.c_str()));
    while (std::getline(lines, line)) {
        unsigned short last = 1, mid = 2, longest = 3;
        if (!meter.measure(line.c_str(), last, mid, longest).isSuccess() &&
            (last != 1 || mid != 2 || longest != 3))
            std::abort();
    }
    return 0;
}
