#include "profile/ProfileReader.h"

#include <algorithm>
#include <sstream>

#include "base/Suggestion.h"
#include "base/Text.h"

namespace board {

namespace {

std::string typeOf(const toml::node& node) {
    std::ostringstream type;
    type << node.type();
    return type.str();
}

bool isControl(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F;
}

} // namespace

ProfileReader::ProfileReader(const ProfileSource& source, const toml::table& table,
                             std::string place, Keys known)
    : m_source(source), m_table(table), m_place(std::move(place)) {
    for (const auto& [key, value] : m_table) {
        const auto matches = [&text = key](const char* name) { return text.str() == name; };
        if (std::any_of(known.begin(), known.end(), matches))
            continue;
        failAt(key.source(), placeOf(std::string(key.str())),
               "unknown key (expected " + join(known) + ")" +
                   didYouMean(std::string(key.str()), {known.begin(), known.end()}));
    }
}

std::string ProfileReader::placeOf(const std::string& key) const {
    return m_place.empty() ? key : m_place + "." + key;
}

std::string ProfileReader::lineOf(const toml::source_region& region) const {
    return m_source.name + ":" + std::to_string(region.begin.line) + ": ";
}

void ProfileReader::failAt(const toml::source_region& region, const std::string& place,
                           const std::string& what) const {
    throw ProfileError(m_source.name, {lineOf(region) + printable(place), printable(what)});
}

void ProfileReader::fail(const char* key, const std::string& what) const {
    const toml::node* const found = m_table.get(key);
    failAt(found ? found->source() : m_table.source(), placeOf(key), what);
}

const toml::node& ProfileReader::node(const char* key) const {
    const toml::node* const found = m_table.get(key);
    if (!found)
        fail(key, "missing (expected in this table)");
    return *found;
}

std::string ProfileReader::text(const char* key) const {
    const toml::node& value = node(key);
    const auto* const string = value.as_string();
    if (!string)
        fail(key, "is of type " + typeOf(value) + " (expected a string)");
    if (string->get().find('\0') != std::string::npos)
        fail(key, "contains a zero byte (expected a string without one)");
    return string->get();
}

std::string ProfileReader::name(const char* key) const {
    std::string value = text(key);
    if (value.empty())
        fail(key, "is empty (expected a name)");
    if (std::any_of(value.begin(), value.end(), isControl))
        fail(key, "contains a control character (expected a name without one)");
    return value;
}

NamedPath ProfileReader::path(const char* key) const {
    const std::string value = text(key);
    if (value.empty())
        fail(key, "is empty (expected a path)");
    return {value.front() == '/' ? value : m_source.folder + value, where(key)};
}

NamedPath ProfileReader::device(const char* key) const {
    NamedPath named = path(key);
    const std::string value = text(key);
    if (value.rfind("hwmon:", 0) == 0 || value.rfind("led:", 0) == 0)
        named.path = value;
    return named;
}

bool ProfileReader::boolean(const char* key) const {
    const toml::node& value = node(key);
    if (!value.is_boolean())
        fail(key, "is of type " + typeOf(value) + " (expected true or false)");
    return value.as_boolean()->get();
}

std::int64_t ProfileReader::integer(const char* key, std::int64_t minimum,
                                    std::int64_t maximum) const {
    const toml::node& value = node(key);
    const std::string range =
        " (expected " + std::to_string(minimum) + " to " + std::to_string(maximum) + ")";
    if (!value.is_integer())
        fail(key, "is of type " + typeOf(value) + range);
    const std::int64_t number = value.as_integer()->get();
    if (number < minimum || number > maximum)
        fail(key, std::to_string(number) + " is out of range" + range);
    return number;
}

std::uint32_t ProfileReader::number(const char* key, std::uint32_t minimum,
                                    std::uint32_t maximum) const {
    return static_cast<std::uint32_t>(integer(key, minimum, maximum));
}

std::int32_t ProfileReader::signedNumber(const char* key) const {
    return static_cast<std::int32_t>(integer(key, INT32_MIN, INT32_MAX));
}

double ProfileReader::decimal(const char* key, double minimum, double maximum) const {
    const toml::node& value = node(key);
    std::ostringstream range;
    range << " (expected " << minimum << " to " << maximum << ")";
    if (!value.is_number())
        fail(key, "is of type " + typeOf(value) + range.str());
    const double number = value.value<double>().value_or(0);
    if (!(number >= minimum && number <= maximum)) { // written so that NaN fails too
        std::ostringstream text;
        text << number << " is out of range";
        fail(key, text.str() + range.str());
    }
    return number;
}

std::int32_t ProfileReader::word(const char* key, Words words) const {
    return wordOr(key, words, "");
}

std::int32_t ProfileReader::wordOrNumber(const char* key, Words words) const {
    return node(key).is_string() ? wordOr(key, words, ", or a number") : signedNumber(key);
}

std::int32_t ProfileReader::wordOr(const char* key, Words words, const char* alternative) const {
    const std::string value = text(key);
    std::vector<std::string> known;
    for (const auto& [word, number] : words) {
        if (value == word)
            return number;
        known.emplace_back(word);
    }
    fail(key, "'" + value + "' is unknown (expected " + join(known) + alternative + ")" +
                  didYouMean(value, known));
}

std::optional<ProfileReader> ProfileReader::table(const char* key, Keys known) const {
    if (!has(key))
        return std::nullopt;
    const toml::node& value = node(key);
    if (!value.is_table())
        fail(key, "is of type " + typeOf(value) + " (expected a table, [" + placeOf(key) + "])");
    return ProfileReader(m_source, *value.as_table(), placeOf(key), known);
}

std::vector<ProfileReader> ProfileReader::tables(const char* key, Keys known) const {
    std::vector<ProfileReader> readers;
    if (!has(key))
        return readers;
    const toml::node& value = node(key);
    if (!value.is_array())
        fail(key, "is of type " + typeOf(value) + " (expected tables, [[" + placeOf(key) + "]])");
    for (const toml::node& element : *value.as_array()) {
        const std::string place = placeOf(key) + "[" + std::to_string(readers.size()) + "]";
        if (!element.is_table())
            failAt(element.source(), place,
                   "is of type " + typeOf(element) + " (expected a table)");
        readers.emplace_back(m_source, *element.as_table(), place, known);
    }
    return readers;
}

} // namespace board
