#pragma once

#include "String.h"

/// Splits a copy of a text at delimiter bytes. As with strtok, a run of delimiters counts as one,
/// and delimiters at the ends are ignored, so no token is empty.
class StringTokenizer {
public:
    StringTokenizer(const String& text, const String& delimiters);

    bool hasMoreTokens() const;

    /// The next token; the empty string if none is left.
    String nextToken();

private:
    std::string::size_type skipDelimiters(std::string::size_type position) const;

    std::string m_text;
    std::string m_delimiters;
    std::string::size_type m_position;
};
