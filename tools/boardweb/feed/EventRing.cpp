#include "feed/EventRing.h"

#include <charconv>

namespace boardweb {

namespace {

/// The memory that a message takes. For a short one, the overhead is larger than the text.
std::size_t weightOf(const EventRing::Text& text) {
    constexpr std::size_t PLACE = 96;
    return PLACE + text->capacity();
}

} // namespace

std::string EventRing::idLine(std::uint64_t number) const {
    return "id: " + m_run + "-" + std::to_string(number) + "\n";
}

std::string EventRing::contentOf(const char* event, const std::string& data) {
    return std::string("event: ") + event + "\ndata: " + data + "\n\n";
}

void EventRing::keep(std::string text) {
    m_messages.push_back(std::make_shared<const std::string>(std::move(text)));
    m_bytes += weightOf(m_messages.back());
    while (m_bytes > m_limit && m_messages.size() > 1) {
        m_bytes -= weightOf(m_messages.front());
        m_messages.pop_front();
        ++m_oldest;
    }
}

std::optional<std::uint64_t> EventRing::numberOf(std::string_view id) const {
    const std::size_t start = m_run.size() + 1;
    if (id.size() <= start || id.substr(0, m_run.size()) != m_run || id[m_run.size()] != '-')
        return std::nullopt;
    std::uint64_t number = 0;
    const char* const end = id.data() + id.size();
    const auto [rest, error] = std::from_chars(id.data() + start, end, number);
    if (error != std::errc() || rest != end || number == 0 || number > newest())
        return std::nullopt;
    return number;
}

} // namespace boardweb
