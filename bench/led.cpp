// The LED sequencer: a tick, compared with the bare writes to the LED files, and the handling of
// one command line.

#include <cstdlib>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include "Allocations.h"
#include "LedCtrl.h"

namespace {

constexpr int FILES = 32;
constexpr int ACTIONS = 16;
constexpr int ROWS = 64;

class Sequencer : public LedCtrl {
public:
    Sequencer(const std::vector<CmdDef>& rows, const std::vector<FileNameMap>& files,
              AccessMethod method)
        : LedCtrl(rows.data(), static_cast<unsigned>(rows.size()), files.data(),
                  static_cast<unsigned>(files.size()), method, 100, 0x0F0F0F0F, NotStarted()) {}
    ~Sequencer() override { shutdown(); }
    using LedCtrl::handleCmd;
    using LedCtrl::openFiles;
    using LedCtrl::setupDefault;
    using LedCtrl::update;
};

/// The files of 32 LEDs: ordinary files in a temporary folder.
class LedFiles {
public:
    LedFiles() {
        if (!::mkdtemp(m_folder.data()))
            std::abort();
        for (int i = 0; i < FILES; ++i) {
            m_paths.push_back(m_folder + "/" + std::to_string(i));
            m_descriptors.push_back(
                ::open(m_paths.back().c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
        }
        for (int i = 0; i < FILES; ++i)
            m_map.push_back(
                {static_cast<std::int32_t>(1U << i), m_paths[static_cast<std::size_t>(i)].c_str()});
    }
    ~LedFiles() {
        for (int i = 0; i < FILES; ++i) {
            ::close(m_descriptors[static_cast<std::size_t>(i)]);
            ::unlink(m_paths[static_cast<std::size_t>(i)].c_str());
        }
        ::rmdir(m_folder.c_str());
    }
    const std::vector<LedCtrl::FileNameMap>& map() const { return m_map; }
    const std::vector<int>& descriptors() const { return m_descriptors; }

private:
    std::string m_folder = "/tmp/led-bench-XXXXXX";
    std::vector<std::string> m_paths;
    std::vector<int> m_descriptors;
    std::vector<LedCtrl::FileNameMap> m_map;
};

/// A mixture of rolls in both directions, blinking and steady actions. No action ends during the
/// measurement.
std::vector<LedCtrl::CmdDef> actions() {
    std::vector<LedCtrl::CmdDef> rows;
    constexpr std::int32_t KINDS[] = {LedCtrl::ACTION_ROLL_UP, LedCtrl::ACTION_BLINK,
                                      LedCtrl::ACTION_ROLL_DOWN, LedCtrl::ACTION_ON};
    for (int i = 0; i < ACTIONS; ++i) {
        const std::int32_t kind = KINDS[i % 4];
        const bool isRoll = kind == LedCtrl::ACTION_ROLL_UP || kind == LedCtrl::ACTION_ROLL_DOWN;
        rows.push_back({"a", "b", i, isRoll ? 0xFFU << i : 3U << i, kind, 0,
                        isRoll ? 0 : INT32_MAX / 1000, true});
    }
    return rows;
}

void tick(benchmark::State& state) {
    const LedFiles files;
    const std::vector<LedCtrl::CmdDef> rows = actions();
    Sequencer leds(rows, files.map(), LedCtrl::ACCESS_FILES);
    leds.openFiles();
    leds.setupDefault();
    const std::size_t before = allocations();
    for (auto _ : state)
        leds.update();
    state.counters["allocations"] = static_cast<double>(allocations() - before);
}
BENCHMARK(tick)->Name("led tick, 32 files, 16 actions")->Iterations(20000);

void tickFloor(benchmark::State& state) {
    const LedFiles files;
    unsigned lit = 1;
    for (auto _ : state) {
        for (const int file : files.descriptors())
            if (::write(file, lit & 1U ? "1" : "0", 1) != 1)
                state.SkipWithError("a write failed");
        ++lit;
    }
}
BENCHMARK(tickFloor)->Name("led tick, 32 files, 16 actions/floor")->Iterations(20000);

void commandLine(benchmark::State& state) {
    std::vector<std::string> words;
    for (int i = 0; i < ROWS; ++i)
        words.push_back("command" + std::to_string(i));
    std::vector<LedCtrl::CmdDef> rows;
    for (const std::string& word : words)
        rows.push_back({word.c_str(), "state", 7, 1, LedCtrl::ACTION_ON, 1, 0, false});
    Sequencer leds(rows, {}, LedCtrl::ACCESS_NONE);
    std::string line = words.back() + " state 7";
    for (auto _ : state)
        leds.handleCmd(line.data());
}
BENCHMARK(commandLine)->Name("command line, last of 64 rows");

} // namespace
