#include "descriptor/compare/TextPattern.h"

#include "base/Error.h"

namespace board {

namespace {

/// Compiled, an expression can be many times as large.
constexpr std::size_t LONGEST = 1000;

} // namespace

TextPattern::TextPattern(const std::string& expression) : m_expression(expression) {
    if (expression.size() > LONGEST)
        throw Error("the regular expression has " + std::to_string(expression.size()) +
                    " characters (expected at most " + std::to_string(LONGEST) + ")");
    if (expression.find('\0') != std::string::npos)
        throw Error("the regular expression holds a zero character");
    auto compiled = std::make_unique<regex_t>();
    if (const int error = ::regcomp(compiled.get(), expression.c_str(), REG_EXTENDED)) {
        char reason[100];
        ::regerror(error, compiled.get(), reason, sizeof reason);
        throw Error(std::string("the regular expression is invalid: ") + reason);
    }
    m_compiled = std::shared_ptr<const regex_t>(compiled.release(), [](const regex_t* regex) {
        auto* const owned = const_cast<regex_t*>(regex);
        ::regfree(owned);
        delete owned;
    });
}

bool TextPattern::matches(const std::string& text) const {
    // A POSIX match is the longest at the first place where there is one.
    regmatch_t match{};
    match.rm_eo = static_cast<regoff_t>(text.size());
    return ::regexec(m_compiled.get(), text.data(), 1, &match, REG_STARTEND) == 0 &&
           match.rm_so == 0 && static_cast<std::size_t>(match.rm_eo) == text.size();
}

} // namespace board
