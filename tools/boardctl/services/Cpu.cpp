#include <iostream>
#include <string>

#include "board/CpuMeter.h"
#include "output/Json.h"
#include "output/Messages.h"
#include "output/Progress.h"
#include "output/Readings.h"
#include "program/Command.h"
#include "program/Commands.h"
#include "program/StopSignals.h"
#include "program/WordChecks.h"

namespace boardctl {

namespace {

struct CpuWords {
    double period = 1;
    unsigned count = 1;
};

int cpu(const Options& options, const CpuWords& words) {
    const unsigned count = words.count;
    board::CpuMeter meter;
    int status = DONE;
    Progress progress(count * words.period);
    auto next = StopSignals::Clock::now();
    for (unsigned i = 0; i < count; ++i) {
        next += StopSignals::spanOf(words.period);
        if (progress.waitUntil(next, count == 1 ? "measuring"
                                                : "period " + std::to_string(i + 1) + " of " +
                                                      std::to_string(count)))
            return status;
        progress.clear();
        const board::Result<board::CpuReading> reading = meter.next();
        if (options.json)
            printJson(toJson(reading), count == 1 ? 2 : -1);
        else if (reading)
            std::cout << toText(reading) << "\n";
        if (!reading) {
            complain(reading.fault());
            status = FAILED;
        }
        if (!flushOutput())
            return FAILED;
    }
    return status;
}

} // namespace

void addCpu(CLI::App& app, Options& options) {
    const auto [command, words] =
        addCommand<CpuWords, cpu>(app, options, "cpu", "Measure the CPU load");
    command.add_option("--period", words.period, "Length of a period; default 1 second")
        ->check(seconds(0.1, 86400))
        ->option_text("SECONDS");
    command.add_option("--count", words.count, "Number of periods; default 1")
        ->transform(decimal(1, 1000000000))
        ->option_text("N");
}

} // namespace boardctl
