#include "descriptor/list/JsonEntries.h"

#include <algorithm>
#include <cerrno>
#include <iterator>

#include "base/EndingSignals.h"
#include "base/Error.h"
#include "base/File.h"
#include "base/Suggestion.h"
#include "base/Text.h"
#include "descriptor/TagImage.h"

using nlohmann::json;

namespace board {

namespace {

/// The parser's position in the text. All copies that the parser makes of its iterators share it.
struct Progress {
    const char* at;
    std::size_t line = 1;
    bool isJustBehindNewline = false;

    /// The line of the character that was read last.
    std::size_t lastLine() const { return line - (isJustBehindNewline ? 1 : 0); }
};

/// Reads a text and counts its lines.
class CountingIterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    CountingIterator(const char* at, Progress* progress) : m_at(at), m_progress(progress) {}

    reference operator*() const { return *m_at; }
    CountingIterator& operator++() {
        m_progress->isJustBehindNewline = *m_at == '\n';
        if (m_progress->isJustBehindNewline)
            ++m_progress->line;
        m_progress->at = ++m_at;
        return *this;
    }
    friend bool operator==(const CountingIterator& a, const CountingIterator& b) {
        return a.m_at == b.m_at;
    }
    friend bool operator!=(const CountingIterator& a, const CountingIterator& b) {
        return !(a == b);
    }

private:
    const char* m_at;
    Progress* m_progress;
};

/// Receives what the parser finds.
class Reader {
public:
    Reader(const std::string& source, const std::vector<std::string>& keys,
           const Progress& progress, const std::function<void(const JsonEntry&)>& take)
        : m_keys(keys), m_progress(progress), m_take(take), m_entry{source, 0, 0, {}} {}

    // The parser requires these functions and their names.
    bool null() { return value(nullptr); }
    bool boolean(bool is) { return value(is); }
    bool number_integer(json::number_integer_t number) { return value(number); }
    bool number_unsigned(json::number_unsigned_t number) { return value(number); }
    bool number_float(json::number_float_t number, const std::string&) { return value(number); }
    bool string(std::string& text) { return value(std::move(text)); }
    bool binary(json::binary_t&) { return false; } // not in JSON text

    bool start_object(std::size_t) {
        if (m_depth == 1) {
            if (m_entry.number == MOST_ENTRIES)
                m_entry.fail(nullptr, "is one too many (expected at most " +
                                          std::to_string(MOST_ENTRIES) +
                                          " entries, which fill the largest image)");
            m_entry.line = m_progress.line;
            m_entry.members.clear();
        } else {
            value(json::object());
        }
        return enter();
    }
    bool end_object() {
        if (--m_depth == 1) {
            m_take(m_entry);
            ++m_entry.number;
        }
        return true;
    }
    bool start_array(std::size_t) {
        if (m_depth > 0)
            value(json::array());
        return enter();
    }
    bool end_array() {
        --m_depth;
        return true;
    }

    bool key(std::string& name) {
        if (m_depth != 2)
            return true;
        JsonMember member{std::move(name), nullptr, m_progress.line};
        const std::string quoted = '"' + printable(member.key.substr(0, LONGEST_KEY)) + '"';
        if (std::find(m_keys.begin(), m_keys.end(), member.key) == m_keys.end())
            m_entry.fail(&member, "unknown key " + quoted + " (expected " + joinChoices(m_keys) +
                                      ")" + didYouMean(member.key.substr(0, LONGEST_KEY), m_keys));
        if (m_entry.find(member.key))
            m_entry.fail(&member, "the key " + quoted + " occurs twice");
        m_entry.members.push_back(std::move(member));
        return true;
    }

    bool parse_error(std::size_t, const std::string&, const json::exception& error) {
        fail(reasonOf(error.what()));
    }

    /// Throws an Error that names the parser's position.
    [[noreturn]] void fail(const std::string& what) const {
        const std::string entry = "entry " + std::to_string(m_entry.number) + ": ";
        throw Error(m_entry.source + ":" + std::to_string(m_progress.lastLine()) + ": " +
                    (m_depth > 0 ? entry : "") + what);
    }

private:
    static constexpr std::size_t LONGEST_KEY = 40;
    static constexpr std::size_t DEEPEST = 8;                       // more than a valid list has
    static constexpr std::size_t MOST_ENTRIES = MAX_IMAGE_SIZE / 4; // each at least a header

    /// The parser's message, such as "[name] parse error at line 2, column 3: syntax error",
    /// without the name and the line. The line is left out because the parser counts a newline as
    /// part of the next line.
    std::string reasonOf(const std::string& what) const {
        constexpr std::size_t LONGEST = 200; // the message may quote the text
        constexpr char PLACE[] = "parse error at line ";
        std::size_t start = what.find("] ") + 2;
        if (what.compare(start, sizeof PLACE - 1, PLACE) == 0)
            start = what.find(m_progress.isJustBehindNewline ? ": " : ", ", start) + 2;
        return what.substr(start, LONGEST) + (what.size() > start + LONGEST ? "..." : "");
    }

    bool enter() {
        if (++m_depth > DEEPEST)
            fail("is nested too deeply (expected at most " + std::to_string(DEEPEST) + " levels)");
        return true;
    }

    bool value(json found) {
        if (isEndAsked())
            throw Error(m_entry.source + ": can't read: " + board::reasonOf(EINTR));
        if (m_depth == 0)
            throw Error(m_entry.source +
                        ": is not an array (expected [{\"id\":45,\"data\":\"1234abcd\"}, ...])");
        if (m_depth == 1) {
            // To find the end of a number, the parser has read the character after it.
            m_entry.line = found.is_number() ? m_progress.lastLine() : m_progress.line;
            m_entry.fail(nullptr, "is " + shown(found) +
                                      " (expected an object such as {\"id\":45,\"data\":"
                                      "\"1234abcd\"})");
        }
        if (m_depth == 2)
            m_entry.members.back().value = std::move(found);
        return true;
    }

    const std::vector<std::string>& m_keys;
    const Progress& m_progress;
    const std::function<void(const JsonEntry&)>& m_take;
    JsonEntry m_entry;
    std::size_t m_depth = 0;
};

} // namespace

const JsonMember* JsonEntry::find(const std::string& key) const {
    const auto found = std::find_if(members.begin(), members.end(),
                                    [&key](const JsonMember& each) { return each.key == key; });
    return found == members.end() ? nullptr : &*found;
}

void JsonEntry::fail(const JsonMember* member, const std::string& what) const {
    throw Error(source + ":" + std::to_string(member ? member->line : line) + ": entry " +
                std::to_string(number) + ": " + what);
}

void readEntries(const std::string& text, const std::string& source,
                 const std::vector<std::string>& keys,
                 const std::function<void(const JsonEntry&)>& take) {
    const char* const end = text.data() + std::min(text.find('\0'), text.size());
    const bool hasZero = end < text.data() + text.size(); // the parser would end there
    Progress progress{text.data()};
    Reader reader(source, keys, progress, take);
    try {
        json::sax_parse(CountingIterator(text.data(), &progress), CountingIterator(end, &progress),
                        &reader);
    } catch (const Error&) {
        if (!hasZero || progress.at != end)
            throw;
    }
    if (hasZero)
        reader.fail("holds a zero byte (expected JSON)");
}

std::string shown(const json& value) {
    return value.is_number() || value.is_boolean() ? value.dump()
                                                   : std::string("of type ") + value.type_name();
}

} // namespace board
