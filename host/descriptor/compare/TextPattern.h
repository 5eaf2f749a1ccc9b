#pragma once

#include <memory>
#include <string>

#include <regex.h>

namespace board {

/// A POSIX extended regular expression without references to groups (\1) and of a limited size with
/// its repetitions written out. So its cost is bounded, unlike that of a matcher that backtracks: a
/// pattern must not stop a production line.
class TextPattern {
public:
    /// Throws Error that says what is wrong with `expression`.
    explicit TextPattern(const std::string& expression);

    const std::string& expression() const { return m_expression; }

    /// Whether all of `text` matches, byte by byte.
    bool matches(const std::string& text) const;

private:
    std::string m_expression;
    std::shared_ptr<const regex_t> m_compiled;
};

} // namespace board
