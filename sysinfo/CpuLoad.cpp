#include "CpuLoad.h"

#include <cstdio>

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
    char m_text[256]; // long enough for the name and the first four numbers
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
    const cpufigures::Ring ring{m_busy, m_idle, m_current, m_index5, m_index14};
    return cpufigures::start(ring, FirstLine(USAGE_FILE).get()) ? XCode() : XCode(XCode::FAILURE);
}

XCode CpuLoad::measure(unsigned short& last, unsigned short& mid, unsigned short& longest) {
    const cpufigures::Ring ring{m_busy, m_idle, m_current, m_index5, m_index14};
    return cpufigures::measure(ring, FirstLine(USAGE_FILE).get(), {last, mid, longest})
               ? XCode()
               : XCode(XCode::FAILURE);
}
