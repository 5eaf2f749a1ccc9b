#include "leds/check/LedDeviceCheck.h"

#include <algorithm>

#include "LedCtrl.h"
#include "base/File.h"
#include "devices/DeviceFile.h"

namespace board {

namespace {

/// A lit LED is almost dark if its brightness is below the maximum divided by this.
constexpr long long LEAST_SHARE = 20;

class LedDevices {
public:
    LedDevices(const LedSequencerProfile& tables, const DeviceLocator& locator)
        : m_locator(locator.readingOnce()), m_findings(tables) {}

    void check(const LedSequencerProfile::File& file) {
        std::string path;
        try {
            path = m_locator.locate(file.path.path);
            // A simulated board's LEDs are pipes.
            expectKind(path, {FileKind::REGULAR, FileKind::CHARACTER_DEVICE, FileKind::PIPE},
                       "an LED's file (expected a file, a pipe or a character device)");
            expectWritable(path);
        } catch (const Error& error) {
            mistake(file, std::string("this LED is not driven: ") + error.what());
            return;
        }
        checkRange(file, path);
    }

    std::vector<LedFinding> take() { return m_findings.take(); }

private:
    void mistake(const LedSequencerProfile::File& file, const std::string& what) {
        m_findings.add(LedFinding::Level::MISTAKE, file, "path", what);
    }

    void checkRange(const LedSequencerProfile::File& file, const std::string& path) {
        const auto maximum = maximumOf(path);
        if (!maximum)
            return;
        if (!*maximum) {
            mistake(file, maximum->fault());
            return;
        }
        const std::string most = std::to_string(**maximum);
        const std::string on = "`on` is " + std::to_string(file.on) + ", but " +
                               maximumFileOf(path) + " holds " + most;
        if (file.on > **maximum)
            mistake(file, on + ": the LED is lit at " + most);
        else if (file.on * LEAST_SHARE < **maximum)
            m_findings.add(LedFinding::Level::DOUBT, file, "path",
                           on + ": when lit, the LED is almost dark");
    }

    const DeviceLocator m_locator;
    LedFindings m_findings;
};

} // namespace

bool mayHaveLeds(const LedSequencerProfile& tables, const DeviceLocator& locator) {
    const DeviceLocator search = locator.readingOnce();
    return tables.files.empty() ||
           std::any_of(tables.files.begin(), tables.files.end(),
                       [&](const LedSequencerProfile::File& file) {
                           try {
                               return !search.locate(file.path.path).empty();
                           } catch (const Error&) {
                               return file.path.path.rfind("led:", 0) != 0;
                           }
                       });
}

std::vector<LedFinding> checkLedDevices(const LedSequencerProfile& tables,
                                        const DeviceLocator& locator) {
    LedDevices check(tables, locator);
    if (tables.access == LedCtrl::ACCESS_FILES)
        for (const LedSequencerProfile::File& file : tables.files)
            check.check(file);
    return check.take();
}

} // namespace board
