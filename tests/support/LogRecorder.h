#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "RTD.h"

namespace support {

/// Records log lines while it lives, each as "CATEGORY LEVEL: TEXT".
class LogRecorder : public RTD::LogSink {
public:
    LogRecorder() : m_former(RTD::SET_LOG_SINK(this)) {}
    ~LogRecorder() override { RTD::SET_LOG_SINK(m_former); }
    void write(const String& category, int level, const String& text) override {
        const std::lock_guard<std::mutex> hold(m_mutex);
        m_lines.push_back(std::string(category.c_str()) + " " + std::to_string(level) + ": " +
                          text.c_str());
    }
    /// The lines logged since the last call.
    std::vector<std::string> take() {
        const std::lock_guard<std::mutex> hold(m_mutex);
        return std::exchange(m_lines, {});
    }

private:
    RTD::LogSink* const m_former;
    std::mutex m_mutex;
    std::vector<std::string> m_lines;
};

} // namespace support
