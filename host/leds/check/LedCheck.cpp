#include "leds/check/LedCheck.h"

#include "LedCtrl.h"
#include "leds/check/LedFileCheck.h"
#include "leds/check/LedLightCheck.h"
#include "leds/check/LedRowCheck.h"
#include "leds/check/LedRows.h"
#include "leds/check/LedStartCheck.h"

namespace board {

std::vector<LedFinding> checkLeds(const Profile& profile) {
    if (!profile.ledService)
        return {};
    const LedSequencerProfile& tables = *profile.ledService;
    LedFindings findings(tables);
    if (tables.tickUs() == 0)
        findings.add(LedFinding::Level::MISTAKE, "tick_ms",
                     std::to_string(tables.tickMs) +
                         " is not a usable tick period: the service stays idle");
    if (tables.access != LedCtrl::ACCESS_FILES && tables.access != LedCtrl::ACCESS_NONE)
        findings.add(LedFinding::Level::MISTAKE, "access",
                     std::to_string(tables.access) + " is not an access method: nothing is shown");
    const LedRows rows(tables);
    checkLedFiles(tables, profile.leds, findings);
    checkLedRows(tables, rows, findings);
    checkLedStart(tables, findings);
    checkLedLights(tables, rows, findings);
    return findings.take();
}

} // namespace board
