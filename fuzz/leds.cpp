// Runs an LED sequencer with an arbitrary table and sends it arbitrary lines through the pipe. This
// file's own parser finds the row that each line names; a second sequencer runs these rows and must
// show the same LEDs. If all rows are static, a simple model must show the same too.

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <fuzzer/FuzzedDataProvider.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include "LedCtrl.h"
#include "Oracle.h"

using fuzz::expect;

namespace {

struct Texts {
    std::string word1, word2;
};

class Sequencer : public LedCtrl {
public:
    Sequencer(const std::vector<CmdDef>& rows, unsigned tickMs, unsigned blinkPattern)
        : LedCtrl(rows.data(), static_cast<unsigned>(rows.size()), nullptr, 0, ACCESS_NONE, tickMs,
                  blinkPattern, NotStarted()) {}
    using LedCtrl::executeCmd;
    using LedCtrl::handleCmd;
    using LedCtrl::nextOutput;
    using LedCtrl::readCmd;
    using LedCtrl::setupDefault;
    using LedCtrl::setupFifo;
};

/// A model of rows without times, groups and rolls.
class StaticModel {
public:
    explicit StaticModel(std::uint32_t pattern) : m_pattern(pattern) {}
    void execute(const LedCtrl::CmdDef& row) {
        const auto set = [&](std::uint32_t& mask, bool isLit) {
            mask = isLit ? mask | row.ledMask : mask & ~row.ledMask;
        };
        if (row.action == LedCtrl::ACTION_FLASH)
            return set(m_flash, true);
        set(m_steady, row.action == LedCtrl::ACTION_ON);
        set(m_blink, row.action == LedCtrl::ACTION_BLINK);
    }
    std::uint32_t nextOutput() {
        const int bit = m_tick % 33;
        const bool isLit = m_tick >= 0 && (m_pattern >> std::min(bit, 31) & 1) != 0;
        ++m_tick;
        const std::uint32_t flash = m_flash;
        m_flash = 0;
        return m_steady | flash | (isLit ? m_blink : 0);
    }

private:
    const std::uint32_t m_pattern;
    int m_tick = -32; ///< nothing blinks before tick 0
    std::uint32_t m_steady = 0, m_blink = 0, m_flash = 0;
};

/// The row that a line names; null if there is none.
const LedCtrl::CmdDef* rowOf(const std::vector<LedCtrl::CmdDef>& rows, const std::string& line) {
    std::istringstream words(line);
    std::string word1, word2, number;
    words >> word1 >> word2 >> number;
    const bool isNegative = number[0] == '-';
    long long value = 0;
    for (std::size_t i = isNegative || number[0] == '+' ? 1 : 0;
         i < number.size() && std::isdigit(static_cast<unsigned char>(number[i])) != 0; ++i)
        value = std::min<long long>(value * 10 + (number[i] - '0'), UINT32_MAX);
    value = std::clamp<long long>(isNegative ? -value : value, INT32_MIN, INT32_MAX);
    for (const LedCtrl::CmdDef& row : rows)
        if (word1 == row.word1 && word2 == row.word2 && value == row.number)
            return &row;
    return nullptr;
}

/// The service's pipe, in a private /tmp. No pipe is used if the machine allows no private /tmp, or
/// if the program is below /tmp: then the private /tmp would hide the corpus.
class Pipe {
public:
    Pipe() {
        char program[4096] = {};
        if (::readlink("/proc/self/exe", program, sizeof program - 1) <= 0 ||
            std::string(program).rfind("/tmp/", 0) == 0)
            return;
        if (::unshare(CLONE_NEWNS) != 0 ||
            ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            ::mount("tmp", "/tmp", "tmpfs", 0, nullptr) != 0)
            return;
        ::mkfifo("/tmp/evt.fifo", 0600);
        m_descriptor = ::open("/tmp/evt.fifo", O_RDWR | O_NONBLOCK | O_CLOEXEC);
        expect(m_descriptor >= 0, "the pipe can be created");
    }
    bool isOurs() const { return m_descriptor >= 0; }
    void write(const std::string& text) const {
        expect(::write(m_descriptor, text.data(), text.size()) == static_cast<ssize_t>(text.size()),
               "the pipe accepts the whole text");
    }

private:
    int m_descriptor = -1;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    static const Pipe pipe;
    FuzzedDataProvider data(bytes, size);
    const auto tickMs = data.ConsumeIntegral<unsigned>();
    const auto blinkPattern = data.ConsumeIntegral<unsigned>();
    const bool isStatic = data.ConsumeBool();
    std::vector<Texts> texts(data.ConsumeIntegralInRange<std::size_t>(0, 16));
    std::vector<LedCtrl::CmdDef> rows;
    std::uint32_t named = 0;
    for (Texts& text : texts) { // `texts` must not change later: the rows point into it
        text.word1 = data.ConsumeRandomLengthString(3).c_str();
        text.word2 = data.ConsumeRandomLengthString(3).c_str();
        rows.push_back({text.word1.c_str(), text.word2.c_str(), data.ConsumeIntegralInRange(-1, 2),
                        data.ConsumeIntegral<std::uint32_t>(), data.ConsumeIntegralInRange(-1, 9),
                        data.ConsumeIntegralInRange(-1, 3), data.ConsumeIntegral<std::int32_t>(),
                        data.ConsumeBool()});
        LedCtrl::CmdDef& row = rows.back();
        if (isStatic) {
            row.action =
                std::clamp<std::int32_t>(row.action, LedCtrl::ACTION_ON, LedCtrl::ACTION_FLASH);
            row.group = std::min(row.group, 0);
            row.timeMs = 0;
        }
        named |= row.ledMask;
    }
    Sequencer leds(rows, tickMs, blinkPattern), twin(rows, tickMs, blinkPattern);
    StaticModel model(blinkPattern);
    if (pipe.isOurs())
        leds.setupFifo();
    leds.setupDefault();
    twin.setupDefault();
    for (const LedCtrl::CmdDef& row : rows)
        if (row.isDefault)
            model.execute(row);
    while (data.remaining_bytes() > 0) {
        std::string text;
        if (data.ConsumeBool() && !rows.empty()) {
            const auto& row = rows[data.ConsumeIntegralInRange<std::size_t>(0, rows.size() - 1)];
            text =
                std::string(row.word1) + " " + row.word2 + " " + std::to_string(row.number) + "\n";
        }
        text += data.ConsumeRandomLengthString(200);
        for (std::size_t start = 0; start < text.size(); start += 80) { // the limit of one read
            std::string part = text.substr(start, 80);
            if (pipe.isOurs()) {
                pipe.write(part);
                leds.readCmd();
            }
            std::istringstream lines(part.c_str()); // ends at the first zero byte
            for (std::string line; std::getline(lines, line);) {
                if (const LedCtrl::CmdDef* const row = line.empty() ? nullptr : rowOf(rows, line)) {
                    twin.executeCmd(*row);
                    model.execute(*row);
                }
                if (!pipe.isOurs())
                    leds.handleCmd(line.data());
            }
        }
        for (int ticks = data.ConsumeIntegralInRange(0, 40); ticks > 0; --ticks) {
            const std::uint32_t output = leds.nextOutput();
            expect((output & ~named) == 0, "only LEDs that a row names are lit");
            expect(output == twin.nextOutput(), "a line runs the row that it names, and no other");
            expect(!isStatic || output == model.nextOutput(),
                   "static rows show what the model shows");
        }
    }
    leds.shutdown(); // closes the pipe's reader
    return 0;
}
