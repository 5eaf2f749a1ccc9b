#include "board/CpuMeter.h"

#include <algorithm>

namespace board {

namespace {

/// Counters that ran backwards, as some kernels' do, give more than everything.
unsigned percent(unsigned short share) {
    constexpr unsigned EVERYTHING = 100;
    return std::min<unsigned>(share, EVERYTHING);
}

} // namespace

CpuMeter::CpuMeter() : m_isSetUp(m_load.setup().isSuccess()) {
    unsigned long idle = 0;
    static_cast<void>(m_load.getCurrentLoad(m_busy, idle));
}

CpuReading CpuMeter::next() {
    unsigned long busy = 0, idle = 0;
    CpuReading reading;
    if (!m_load.getCurrentLoad(busy, idle).isSuccess() || !m_isSetUp) {
        reading.fault = std::string(CpuLoad::USAGE_FILE) + ": can't read the processors' times";
        m_isSetUp = m_load.setup().isSuccess(); // a sample is missing: the spans begin anew
        m_periods = 0;
        return reading;
    }
    if (busy != m_busy)
        m_last = m_mid = m_longest = 100;
    m_busy = busy;
    if (!m_load.measure(m_last, m_mid, m_longest).isSuccess()) {
        reading.fault = std::string(CpuLoad::USAGE_FILE) + ": can't read the processors' times";
        m_isSetUp = false;
        return reading;
    }
    ++m_periods;
    reading.last = percent(m_last);
    if (m_periods >= 5)
        reading.mid = percent(m_mid);
    if (m_periods >= 14)
        reading.longest = percent(m_longest);
    return reading;
}

} // namespace board
