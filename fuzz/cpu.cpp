// Feeds arbitrary lines as the first line of /proc/stat, one per period, and compares the load with
// a model that keeps the whole history and counts in 64 bits.

#include <array>
#include <cctype>
#include <cstdint>
#include <optional>
#include <sstream>
#include <vector>

#include "CpuFigures.h"
#include "Oracle.h"

using fuzz::expect;

namespace {

/// The samples of a CPU load meter. The fuzzer passes the lines to the meter.
struct Meter {
    std::uint32_t busy[cpufigures::SLOTS] = {};
    std::uint32_t idle[cpufigures::SLOTS] = {};
    std::uint32_t current = 0, index5 = 0, index14 = 0;
    const cpufigures::Ring ring{busy, idle, current, index5, index14};
};

struct Sample {
    std::uint32_t busy, idle;
};

enum class Form { USUAL, TOO_SHORT, STRANGE };

/// Reads the line word by word. A line is STRANGE if the header's contract does not define whether
/// it is accepted.
Form read(const std::string& line, Sample& sample) {
    std::istringstream words(line);
    std::string word;
    words >> word; // the name
    std::array<std::uint32_t, 4> numbers{};
    std::size_t runs = 0; // runs of digits in all words
    bool isUsual = true;
    for (std::size_t i = 0; words >> word; ++i) {
        const std::size_t sign = word[0] == '-' || word[0] == '+';
        const std::size_t end = std::min(word.find_first_not_of("0123456789", sign), word.size());
        for (std::size_t k = 0; k < word.size(); ++k)
            runs += std::isdigit(static_cast<unsigned char>(word[k])) &&
                    (k == 0 || !std::isdigit(static_cast<unsigned char>(word[k - 1])));
        if (i >= numbers.size())
            continue;
        isUsual = isUsual && end == word.size() && end > sign;
        for (std::size_t k = sign; k < end; ++k)
            numbers[i] = numbers[i] * 10 + static_cast<std::uint32_t>(word[k] - '0');
        if (word[0] == '-')
            numbers[i] = 0U - numbers[i];
    }
    sample = {numbers[0] + numbers[1] + numbers[2], numbers[3]};
    if (runs < numbers.size())
        return Form::TOO_SHORT;
    return isUsual ? Form::USUAL : Form::STRANGE;
}

/// All periods since the start. If the line of a period was rejected, the sample of 15 periods
/// earlier stays in its place.
class History {
public:
    void add(std::optional<Sample> sample) { m_samples.push_back(sample); }

    Sample at(std::size_t periodsAgo) const {
        std::size_t from = m_samples.size();
        for (; periodsAgo < from; periodsAgo += 15)
            if (const auto& sample = m_samples[from - 1 - periodsAgo])
                return *sample;
        return {0, 0};
    }

private:
    std::vector<std::optional<Sample>> m_samples;
};

void checkShare(const Sample& from, const Sample& to, unsigned short before,
                unsigned short percent) {
    constexpr std::uint64_t MOST_BUSY = 21000000;
    const std::uint64_t busy = to.busy - from.busy; // 32 bits, wrapping
    const std::uint64_t idle = to.idle - from.idle;
    if (idle == 0)
        expect(percent == before, "without idle time an output is left alone");
    else if (busy < MOST_BUSY && idle < INT32_MAX - MOST_BUSY)
        expect(percent == 100 * busy / (busy + idle), "a share is that of the span, 0 to 100");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    std::istringstream lines(fuzz::textOf(bytes, size));
    Meter meter;
    History history;
    std::string line;
    bool hasStart = false;
    if (std::getline(lines, line) && !line.empty()) {
        Sample sample{};
        const Form form = read(line.c_str(), sample); // like the meter, ends at a zero byte
        hasStart = cpufigures::start(meter.ring, line.c_str());
        if (form == Form::STRANGE)
            return 0;
        expect(hasStart == (form == Form::USUAL), "a first sample is taken if it has four numbers");
        if (hasStart)
            history.add(sample);
    }
    while (std::getline(lines, line)) {
        Sample sample{};
        const Form form = read(line.c_str(), sample);
        unsigned short last = 101, mid = 102, longest = 103;
        const bool isTaken = cpufigures::measure(meter.ring, line.c_str(), {last, mid, longest});
        if (form == Form::STRANGE)
            return 0;
        expect(isTaken == (form == Form::USUAL), "a sample is taken if it has four numbers");
        history.add(isTaken ? std::optional(sample) : std::nullopt);
        if (!isTaken) {
            expect(last == 101 && mid == 102 && longest == 103,
                   "what is refused changes no output");
            continue;
        }
        checkShare(history.at(1), sample, 101, last);
        if (hasStart) {
            checkShare(history.at(5), sample, 102, mid);
            checkShare(history.at(14), sample, 103, longest);
        } else {
            expect(mid == 102 && longest == 103,
                   "without a first sample the longer spans are never set");
        }
    }
    return 0;
}
