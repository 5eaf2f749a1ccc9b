#include "CpuLoad.h"

#include <cstdio>
#include <initializer_list>

#include "CpuFigures.h"

namespace {

class FirstLine {
public:
    explicit FirstLine(const char* path) {
        if (std::FILE* const file = std::fopen(path, "re")) {
            m_isRead = std::fgets(m_text, sizeof m_text, file) != nullptr;
            static_cast<void>(std::fclose(file));
        }
    }
    const char* get() const { return m_isRead ? m_text : nullptr; }

private:
    char m_text[256]; // the numbers that count end well before
    bool m_isRead = false;
};

} // namespace

CpuLoad::CpuLoad() : m_busy{}, m_idle{}, m_current(0), m_index5(0), m_index14(0) {}

XCode CpuLoad::getCurrentLoad(unsigned long& busy, unsigned long& idle) {
    cpufigures::Figures figures{};
    if (!cpufigures::parse(FirstLine(USAGE_FILE).get(), figures))
        return XCode(XCode::FAILURE);
    busy = figures.busy;
    idle = figures.idle;
    return XCode();
}

XCode CpuLoad::setup() {
    return setup(FirstLine(USAGE_FILE).get());
}

XCode CpuLoad::setup(const char* line) {
    cpufigures::Figures figures{};
    if (!cpufigures::parse(line, figures))
        return XCode(XCode::FAILURE);
    m_current = 0;
    m_busy[0] = figures.busy;
    m_idle[0] = figures.idle;
    // Each is advanced before it is used, and so stands 5 and 14 slots behind the new sample.
    m_index5 = 10;
    m_index14 = 1;
    return XCode();
}

XCode CpuLoad::measure(unsigned short& last, unsigned short& mid, unsigned short& longest) {
    return measure(FirstLine(USAGE_FILE).get(), last, mid, longest);
}

XCode CpuLoad::measure(const char* line, unsigned short& last, unsigned short& mid,
                       unsigned short& longest) {
    const std::uint32_t previous = m_current;
    for (std::uint32_t* const index : {&m_current, &m_index5, &m_index14})
        *index = (*index + 1) % SLOTS;
    cpufigures::Figures figures{};
    if (!cpufigures::parse(line, figures))
        return XCode(XCode::FAILURE);
    m_busy[m_current] = figures.busy;
    m_idle[m_current] = figures.idle;
    const auto setShareSince = [&](std::uint32_t slot, unsigned short& percent) {
        cpufigures::setShare({m_busy[slot], m_idle[slot]}, figures, percent);
    };
    setShareSince(previous, last);
    setShareSince(m_index5, mid);
    setShareSince(m_index14, longest);
    return XCode();
}
