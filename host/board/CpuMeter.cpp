#include "board/CpuMeter.h"

#include <algorithm>

namespace board {

namespace {

/// Some kernels' counters run backwards, which yields more than 100 percent.
unsigned percent(unsigned short share) {
    constexpr unsigned EVERYTHING = 100;
    return std::min<unsigned>(share, EVERYTHING);
}

Fault unreadable() {
    return {std::string(CpuLoad::USAGE_FILE) + ": can't read the processors' times"};
}

} // namespace

Result<unsigned> cpuLoadSinceBoot() {
    CpuLoad load; // without `setup`, the first span begins when the system started
    // Without any idle time, `measure` does not set `last`. The load was then 100 percent.
    unsigned short last = 100, mid = 0, longest = 0;
    if (!load.measure(last, mid, longest).isSuccess())
        return unreadable();
    return percent(last);
}

CpuMeter::CpuMeter() : m_isSetUp(m_load.setup().isSuccess()) {
    unsigned long idle = 0;
    static_cast<void>(m_load.getCurrentLoad(m_busy, idle));
}

Result<CpuReading> CpuMeter::next() {
    unsigned long busy = 0, idle = 0;
    if (!m_load.getCurrentLoad(busy, idle).isSuccess() || !m_isSetUp)
        return restart();
    if (busy != m_busy)
        m_last = m_mid = m_longest = 100;
    m_busy = busy;
    if (!m_load.measure(m_last, m_mid, m_longest).isSuccess())
        return restart();
    ++m_periods;
    CpuReading reading;
    reading.last = percent(m_last);
    if (m_periods >= 5)
        reading.mid = percent(m_mid);
    if (m_periods >= 14)
        reading.longest = percent(m_longest);
    return reading;
}

/// A sample is missing, so the longer spans start over. Returns the fault.
Fault CpuMeter::restart() {
    m_isSetUp = m_load.setup().isSuccess();
    m_periods = 0;
    return unreadable();
}

} // namespace board
