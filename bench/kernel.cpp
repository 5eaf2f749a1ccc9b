// The kernel-backed drivers: each operation compared with the system calls that it makes.

#include <cstdio>
#include <cstdlib>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include "Allocations.h"
#include "CFanControl.h"
#include "CLedControl.h"
#include "CThermalSensor.h"
#include "Kernel.h"
#include "TemporaryFile.h"

namespace {

constexpr std::size_t RECORD = 16;
constexpr std::size_t LED_RECORD = 4;

/// Measures an operation of a driver. Only its first call may allocate memory.
template <class Driver, class Operation>
void measure(benchmark::State& state, Operation operation) {
    const TemporaryFile device("41500\n");
    const Kernel kernel(device.path());
    Driver driver(nullptr, "measured", Kernel::ENDPOINT);
    Kernel::connect(driver);
    succeed(operation(driver));
    const std::size_t before = allocations();
    for (auto _ : state)
        succeed(operation(driver));
    state.counters["allocations"] = static_cast<double>(allocations() - before);
}

void readPlainly(benchmark::State& state, std::size_t record) {
    const TemporaryFile device("41500\n");
    for (auto _ : state) {
        char text[RECORD + 1] = {};
        const int file = ::open(device.path(), O_RDONLY);
        if (file < 0 || ::read(file, text, record) < 0)
            std::abort();
        ::close(file);
        benchmark::DoNotOptimize(std::strtol(text, nullptr, 10));
    }
}

void temperature(benchmark::State& state) {
    measure<CThermalSensor>(state, [](CThermalSensor& sensor) {
        float degrees = 0;
        return sensor.getTemperature(degrees);
    });
}
BENCHMARK(temperature)->Name("getTemperature");

void temperatureFloor(benchmark::State& state) {
    readPlainly(state, RECORD);
}
BENCHMARK(temperatureFloor)->Name("getTemperature/floor");

void fanSpeed(benchmark::State& state) {
    measure<CFanControl>(state, [](CFanControl& fan) {
        CFanControl::FanSpeed speed = CFanControl::FAN_SPEED_OFF;
        return fan.getActualFanSpeed(speed);
    });
}
BENCHMARK(fanSpeed)->Name("getActualFanSpeed");

void fanSpeedFloor(benchmark::State& state) {
    readPlainly(state, RECORD);
}
BENCHMARK(fanSpeedFloor)->Name("getActualFanSpeed/floor");

void ledStatus(benchmark::State& state) {
    measure<CLedControl>(state, [](CLedControl& led) {
        unsigned status = 0;
        return led.getLedStatus(status);
    });
}
BENCHMARK(ledStatus)->Name("getLedStatus");

void ledStatusFloor(benchmark::State& state) {
    readPlainly(state, LED_RECORD);
}
BENCHMARK(ledStatusFloor)->Name("getLedStatus/floor");

void setFanSpeed(benchmark::State& state) {
    measure<CFanControl>(
        state, [](CFanControl& fan) { return fan.setFanSpeed(CFanControl::FAN_SPEED_HIGH); });
}
BENCHMARK(setFanSpeed)->Name("setFanSpeed");

void setFanSpeedFloor(benchmark::State& state) {
    const TemporaryFile device("41500\n");
    for (auto _ : state) {
        char record[RECORD] = {};
        std::snprintf(record, sizeof record, "%d", 170);
        const int file = ::open(device.path(), O_WRONLY);
        if (file < 0 || ::write(file, record, sizeof record) != sizeof record)
            std::abort();
        ::close(file);
    }
}
BENCHMARK(setFanSpeedFloor)->Name("setFanSpeed/floor");

} // namespace
