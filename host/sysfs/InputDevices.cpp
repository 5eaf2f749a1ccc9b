#include "sysfs/InputDevices.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <sstream>

#include "base/Text.h"
#include "sysfs/Attributes.h"

namespace board {

namespace {

/// The numbers of the bits that are set. The kernel writes words in hexadecimal, the highest first
/// and without leading zeros. A word has as many bits as an `unsigned long` of the program that
/// reads the file.
Result<std::vector<unsigned>> bitsOf(const std::string& path) {
    constexpr unsigned WORD = 8 * sizeof(unsigned long);
    const Result<std::string> text = readText(path);
    if (!text)
        return Fault{text.fault()};
    std::istringstream stream(*text);
    const std::vector<std::string> words{std::istream_iterator<std::string>(stream), {}};
    std::vector<unsigned> bits;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[words.size() - 1 - i];
        unsigned long value = 0;
        const char* const end = word.data() + word.size();
        const auto parsed = std::from_chars(word.data(), end, value, 16);
        if (parsed.ec != std::errc() || parsed.ptr != end)
            return Fault{path + ": holds '" + printable(word) + "' (expected hexadecimal words)"};
        for (unsigned bit = 0; bit < WORD; ++bit)
            if ((value >> bit & 1) != 0)
                bits.push_back(static_cast<unsigned>(i) * WORD + bit);
    }
    return bits;
}

} // namespace

std::vector<InputDevice> inputDevicesOf(const std::string& sysfs) {
    std::vector<InputDevice> devices;
    const std::string all = sysfs + "/class/input/";
    for (const std::string& entry : entriesOf(all)) {
        if (entry.rfind("event", 0) != 0)
            continue;
        const std::string folder = all + entry + "/device/";
        Result<std::vector<unsigned>> codes = bitsOf(folder + "capabilities/key");
        if (!codes || !codes->empty())
            devices.push_back({"/dev/input/" + entry, readText(folder + "name"), std::move(codes)});
    }
    return devices;
}

std::string rangesOf(const std::vector<unsigned>& numbers) {
    std::vector<std::string> ranges;
    for (auto first = numbers.begin(); first != numbers.end();) {
        auto last = first;
        while (last + 1 != numbers.end() && *(last + 1) == *last + 1)
            ++last;
        ranges.push_back(std::to_string(*first) +
                         (last == first ? "" : " to " + std::to_string(*last)));
        first = last + 1;
    }
    return join(ranges);
}

} // namespace board
