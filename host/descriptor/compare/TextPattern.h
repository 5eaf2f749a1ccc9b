#pragma once

#include <memory>
#include <string>

#include <regex.h>

namespace board {

/// A POSIX extended regular expression. It has no references to groups (\1), and its size with all
/// repetitions written out is limited. These limits bound the cost of a match, so that no pattern
/// can stop a production line. A backtracking matcher would not have such a bound.
class TextPattern {
public:
    /// Throws an Error that tells what is wrong with `expression`.
    explicit TextPattern(const std::string& expression);

    const std::string& expression() const { return m_expression; }

    /// Whether all of `text` matches, byte by byte.
    bool matches(const std::string& text) const;

private:
    std::string m_expression;
    std::shared_ptr<const regex_t> m_compiled;
};

} // namespace board
