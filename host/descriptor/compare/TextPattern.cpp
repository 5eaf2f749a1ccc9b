#include "descriptor/compare/TextPattern.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "base/Error.h"

namespace board {

namespace {

constexpr std::size_t LONGEST_PATTERN = 1000;
/// A compiled repetition needs as much memory as the repeated part, times the repetition's upper
/// bound.
constexpr std::size_t LARGEST_REPETITION = 10000;

/// The position right after the bracket expression that starts at `start`.
std::size_t endOfBracket(const std::string& expression, std::size_t start) {
    const std::size_t first = start + (expression.compare(start, 2, "[^") == 0 ? 2 : 1);
    std::size_t at = first;
    while (at < expression.size() && (expression[at] != ']' || at == first)) {
        const std::string next = expression.substr(at, 2);
        const bool isClass = next == "[:" || next == "[." || next == "[=";
        const std::size_t end =
            isClass ? expression.find({next[1], ']'}, at + 2) : std::string::npos;
        at = end == std::string::npos ? at + 1 : end + 2;
    }
    return std::min(at + 1, expression.size());
}

/// Throws Error if the expression refers back to a group, which has no bounded cost, or would be
/// too large with its repetitions written out.
void expectBounded(const std::string& expression) {
    std::vector<std::size_t> outer; // for each open group, the size before it
    std::size_t size = 0;           // of the innermost open group so far
    std::size_t last = 0;           // of the part that a repetition would repeat
    std::size_t at = 0;
    while (at < expression.size()) {
        const char c = expression[at];
        if (c == '\\' && at + 1 < expression.size() && expression[at + 1] >= '1' &&
            expression[at + 1] <= '9')
            throw Error("the regular expression refers back to a group with \\" +
                        std::string(1, expression[at + 1]) + " (expected none of \\1 to \\9)");
        if (c == '(') {
            outer.push_back(size);
            size = 0;
            ++at;
            continue;
        }
        if (c == ')') {
            if (outer.empty())
                throw Error("the regular expression is invalid: Unmatched ) or \\)");
            last = size + 1;
            size = outer.back() + last;
            outer.pop_back();
            ++at;
        } else if (c == '{' && at + 1 < expression.size()) {
            const std::size_t end = std::min(expression.find('}', at), expression.size());
            std::size_t most = 1;
            for (std::size_t i = at; i < end; ++i)
                most = std::max<std::size_t>(
                    most, std::strtoul(expression.substr(i + 1, end - i - 1).c_str(), nullptr, 10));
            most = std::min(most, LARGEST_REPETITION + 1);
            size += last * (most - 1);
            last *= most;
            at = end + 1;
        } else if (c == '*' || c == '+' || c == '?') {
            ++at;
        } else {
            last = 1;
            ++size;
            at = c == '[' ? endOfBracket(expression, at) : at + (c == '\\' ? 2 : 1);
        }
        if (size > LARGEST_REPETITION)
            throw Error("the regular expression is too large with its repetitions written out "
                        "(expected at most " +
                        std::to_string(LARGEST_REPETITION) + " characters)");
    }
}

std::shared_ptr<const regex_t> compile(const std::string& expression) {
    auto compiled = std::make_unique<regex_t>();
    if (const int error = ::regcomp(compiled.get(), expression.c_str(), REG_EXTENDED | REG_NOSUB)) {
        char reason[100];
        ::regerror(error, compiled.get(), reason, sizeof reason);
        throw Error(std::string("the regular expression is invalid: ") + reason);
    }
    return {compiled.release(), [](const regex_t* regex) {
                auto* const owned = const_cast<regex_t*>(regex);
                ::regfree(owned);
                delete owned;
            }};
}

} // namespace

TextPattern::TextPattern(const std::string& expression) : m_expression(expression) {
    if (expression.size() > LONGEST_PATTERN)
        throw Error("the regular expression has " + std::to_string(expression.size()) +
                    " characters (expected at most " + std::to_string(LONGEST_PATTERN) + ")");
    if (expression.find('\0') != std::string::npos)
        throw Error("the regular expression holds a zero character");
    expectBounded(expression);
    static_cast<void>(compile(expression));         // so that errors are about the user's text
    m_compiled = compile("^(" + expression + ")$"); // without ^, a match is tried at each character
}

bool TextPattern::matches(const std::string& text) const {
    regmatch_t range{};
    range.rm_eo = static_cast<regoff_t>(text.size());
    return ::regexec(m_compiled.get(), text.data(), 1, &range, REG_STARTEND) == 0;
}

} // namespace board
