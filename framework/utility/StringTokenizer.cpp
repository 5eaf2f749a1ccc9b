#include "StringTokenizer.h"

StringTokenizer::StringTokenizer(const String& text, const String& delimiters)
    : m_text(text.c_str(), text.length()), m_delimiters(delimiters.c_str(), delimiters.length()),
      m_position(skipDelimiters(0)) {}

std::string::size_type StringTokenizer::skipDelimiters(std::string::size_type position) const {
    return m_text.find_first_not_of(m_delimiters, position);
}

bool StringTokenizer::hasMoreTokens() const {
    return m_position != std::string::npos;
}

String StringTokenizer::nextToken() {
    if (!hasMoreTokens())
        return String();
    const auto end = m_text.find_first_of(m_delimiters, m_position);
    const std::string token = m_text.substr(m_position, end - m_position);
    m_position = skipDelimiters(end == std::string::npos ? m_text.size() : end);
    return String(token.data(), static_cast<unsigned>(token.size()));
}
