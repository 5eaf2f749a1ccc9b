#include "descriptor/compare/TagCompare.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "descriptor/TagWords.h"

namespace board {

namespace {

constexpr std::size_t NONE = static_cast<std::size_t>(-1);

using Kind = TagDifference::Kind;

/// The places of the tags with one identifier, in both lists.
struct Alike {
    std::vector<std::size_t> expected, found;
};

class Comparison {
public:
    Comparison(const ExpectedList& expected, const TagImage& found)
        : m_expected(expected), m_found(found), m_partner(expected.tags.size(), NONE),
          m_expectedIndex(expected.tags.size(), 0), m_taken(found.tags().size(), false),
          m_index(found.tags().size(), 0) {}

    std::vector<TagDifference> differences() {
        std::unordered_map<BD::TagId, Alike> groups;
        for (std::size_t i = 0; i < m_expected.tags.size(); ++i) {
            auto& alike = groups[m_expected.tags[i].id()].expected;
            m_expectedIndex[i] = static_cast<unsigned>(alike.size());
            alike.push_back(i);
        }
        for (std::size_t i = 0; i < m_found.tags().size(); ++i) {
            auto& alike = groups[m_found.tags()[i].tag.id].found;
            m_index[i] = static_cast<unsigned>(alike.size());
            alike.push_back(i);
        }
        for (const auto& [id, alike] : groups)
            pair(alike);
        const std::vector<std::size_t> passed = passedByMoved();
        for (std::size_t i = 0; i < m_partner.size(); ++i)
            addExpected(i, passed[i]);
        for (std::size_t i = 0; i < m_taken.size(); ++i)
            if (!m_taken[i])
                addExtra(i);
        addEnd();
        return std::move(m_differences);
    }

private:
    const BD::Tag& foundTag(std::size_t place) const { return m_found.tags()[place].tag; }

    void join(std::size_t expected, std::size_t found) {
        m_partner[expected] = found;
        m_taken[found] = true;
    }

    /// Pairs expected and found tags with one identifier: first those that match at the same index,
    /// then equal ones at other indexes, then the remaining ones in their order.
    void pair(const Alike& alike) {
        const std::size_t both = std::min(alike.expected.size(), alike.found.size());
        std::size_t matching = 0;
        for (std::size_t i = 0; i < both; ++i)
            if (m_expected.tags[alike.expected[i]].isMetBy(foundTag(alike.found[i]))) {
                join(alike.expected[i], alike.found[i]);
                ++matching;
            }
        if (matching < both)
            pairEqual(alike);
        std::size_t next = 0;
        for (const std::size_t expected : alike.expected) {
            if (m_partner[expected] != NONE)
                continue;
            while (next < alike.found.size() && m_taken[alike.found[next]])
                ++next;
            if (next < alike.found.size())
                join(expected, alike.found[next]);
        }
    }

    void pairEqual(const Alike& alike) {
        std::unordered_map<std::string, std::vector<std::size_t>> byData; // the last one first
        for (auto found = alike.found.rbegin(); found != alike.found.rend(); ++found)
            if (!m_taken[*found])
                byData[bytesOf(asLoaded(foundTag(*found)).data)].push_back(*found);
        for (const std::size_t expected : alike.expected) {
            const TString<char>* const data = m_expected.tags[expected].data();
            if (m_partner[expected] != NONE || !data)
                continue;
            const auto equal = byData.find(bytesOf(*data));
            if (equal == byData.end() || equal->second.empty())
                continue;
            join(expected, equal->second.back());
            equal->second.pop_back();
        }
    }

    static std::string bytesOf(const TString<char>& data) {
        return std::string(data.data(), data.length());
    }

    /// Which expected tags have been moved: the smallest set whose removal leaves the others in
    /// order. These are the tags outside a longest ascending run of places in the image.
    std::vector<bool> moved() const {
        std::vector<std::size_t> ends;                             // of the best run of each length
        std::vector<std::size_t> previous(m_partner.size(), NONE); // in the best run that ends here
        for (std::size_t i = 0; i < m_partner.size(); ++i) {
            if (m_partner[i] == NONE)
                continue;
            const auto place = std::lower_bound(
                ends.begin(), ends.end(), m_partner[i],
                [this](std::size_t end, std::size_t found) { return m_partner[end] < found; });
            if (place != ends.begin())
                previous[i] = *std::prev(place);
            if (place == ends.end())
                ends.push_back(i);
            else
                *place = i;
        }
        std::vector<bool> isMoved(m_partner.size());
        for (std::size_t i = 0; i < m_partner.size(); ++i)
            isMoved[i] = m_partner[i] != NONE;
        for (std::size_t i = ends.empty() ? NONE : ends.back(); i != NONE; i = previous[i])
            isMoved[i] = false;
        return isMoved;
    }

    /// For each moved tag, the nearest unmoved tag in the expected order that it wrongly precedes
    /// or follows in the image; NONE for the other tags.
    std::vector<std::size_t> passedByMoved() const {
        const std::vector<bool> isMoved = moved();
        std::vector<std::size_t> passed(m_partner.size(), NONE);
        std::size_t inPlace = NONE;
        for (std::size_t i = 0; i < passed.size(); ++i) {
            if (m_partner[i] == NONE)
                continue;
            if (!isMoved[i])
                inPlace = i;
            else if (inPlace != NONE && m_partner[inPlace] > m_partner[i])
                passed[i] = inPlace;
        }
        // If a moved tag correctly follows the nearest unmoved tag expected before it, it wrongly
        // follows the nearest one expected after it.
        inPlace = NONE;
        for (std::size_t i = passed.size(); i-- > 0;) {
            if (m_partner[i] == NONE)
                continue;
            if (!isMoved[i])
                inPlace = i;
            else if (passed[i] == NONE)
                passed[i] = inPlace;
        }
        return passed;
    }

    void addExpected(std::size_t place, std::size_t passed) {
        const ExpectedTag& expected = m_expected.tags[place];
        const unsigned index = m_expectedIndex[place];
        const std::size_t partner = m_partner[place];
        TagDifference difference{Kind::MISSING, expected.id(), index, std::nullopt, "", "", ""};
        difference.expected = expected.data() ? hexDigits(tagOf(expected)) : expected.words();
        const std::string name = nameOf(expected.id(), index);
        if (partner == NONE) {
            difference.text = name + ": is missing (expected " + expected.words() + ")";
            m_differences.push_back(std::move(difference));
            return;
        }
        const BD::Tag& found = foundTag(partner);
        difference.offset = m_found.tags()[partner].offset;
        difference.found = hexDigits(found);
        const std::string start = name + " at " + std::to_string(*difference.offset);
        if (!expected.isMetBy(found)) {
            const bool isAmbiguous = valueWords(found) == expected.words();
            difference.kind = Kind::DIFFERENT;
            difference.text = start + ": is " + valueWords(found, isAmbiguous) + " (expected " +
                              (isAmbiguous ? valueWords(tagOf(expected), true) : expected.words()) +
                              ")";
            m_differences.push_back(difference);
        }
        if (passed != NONE) {
            const bool isEarly = passed < place;
            difference.kind = Kind::ORDER;
            difference.text = start + (isEarly ? ": comes before " : ": comes after ") +
                              nameOf(m_expected.tags[passed].id(), m_expectedIndex[passed]) +
                              " at " + std::to_string(m_found.tags()[m_partner[passed]].offset) +
                              (isEarly ? " (expected after it)" : " (expected before it)");
            m_differences.push_back(std::move(difference));
        }
    }

    void addExtra(std::size_t place) {
        const auto& [tag, offset] = m_found.tags()[place];
        m_differences.push_back({Kind::EXTRA, tag.id, m_index[place], offset, "", hexDigits(tag),
                                 nameOf(tag.id, m_index[place]) + " at " + std::to_string(offset) +
                                     ": is extra: " + valueWords(tag)});
    }

    void addEnd() {
        const std::size_t end = m_found.usedBytes();
        const std::string start = "at " + std::to_string(end) + ": ";
        if (m_found.fault())
            m_differences.push_back(
                {Kind::CORRUPT, TERMINATOR_TAG, 0, end, "", "", start + *m_found.fault()});
        else if (m_expected.needsTerminator && !m_found.terminator())
            m_differences.push_back({Kind::TERMINATOR, TERMINATOR_TAG, 0, end, "", "",
                                     start + "no terminator (expected 00 00 00 04)"});
    }

    static BD::Tag tagOf(const ExpectedTag& expected) {
        BD::Tag tag(expected.id());
        if (expected.data())
            static_cast<void>(tag.setData(*expected.data())); // always succeeds
        return tag;
    }

    static std::string nameOf(BD::TagId id, unsigned index) {
        return tagName(id) + (index > 0 ? "." + std::to_string(index) : "");
    }

    const ExpectedList& m_expected;
    const TagImage& m_found;
    std::vector<std::size_t> m_partner;    ///< of each expected tag: its partner's place, or NONE
    std::vector<unsigned> m_expectedIndex; ///< of each expected tag: which one with its identifier
    std::vector<bool> m_taken;             ///< of each tag of the image: whether it has a partner
    std::vector<unsigned> m_index; ///< of each tag of the image: which one with its identifier
    std::vector<TagDifference> m_differences;
};

} // namespace

std::vector<TagDifference> compareTags(const ExpectedList& expected, const TagImage& found) {
    return Comparison(expected, found).differences();
}

} // namespace board
