#pragma once

#include "String.h"

/// Splits a text at delimiter bytes. A run of delimiters counts as one and delimiters at the ends
/// give no token, as with strtok; so there are no empty tokens. Keeps a copy of the text.
class StringTokenizer {
public:
    StringTokenizer(const String& text, const String& delimiters);

    bool hasMoreTokens() const;

    /// The next token; the empty string when there is none left.
    String nextToken();

private:
    std::string::size_type skipDelimiters(std::string::size_type position) const;

    std::string m_text;
    std::string m_delimiters;
    std::string::size_type m_position;
};
