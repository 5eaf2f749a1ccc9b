#include "descriptor/DescriptorCheck.h"

#include <algorithm>
#include <iterator>
#include <map>

#include "CBoardDescr.h"

namespace board {

namespace {

constexpr BD::TagId MAC_TAG = 1;
constexpr std::size_t HEADER_BYTES = 4;

/// Identifiers whose meaning is known; of each but the MAC addresses a board has one. `size` is
/// what their data needs to be read as what it means, 0 where any will do. In ascending order.
struct KnownTags {
    BD::TagId first;
    BD::TagId last;
    unsigned size;
};

constexpr KnownTags KNOWN[] = {
    {1, 1, 8},         {2, 2, 4},         {3, 3, 0},   {4, 4, 4},         {5, 5, 0},
    {6, 7, 4},         {8, 8, 0},         {9, 9, 4},   {10, 15, 0},       {16, 18, 4},
    {20, 21, 4},       {22, 25, 0},       {26, 29, 4}, {41, 43, 4},       {44, 44, 0},
    {45, 45, 4},       {46, 49, 0},       {50, 51, 4}, {32768, 32786, 4}, {32787, 32788, 0},
    {32789, 32789, 4}, {32791, 32793, 4},
};

const KnownTags* knownTag(BD::TagId id) {
    const auto* const row =
        std::find_if(std::begin(KNOWN), std::end(KNOWN), [id](const KnownTags& range) {
            return range.first <= id && id <= range.last;
        });
    return row != std::end(KNOWN) ? row : nullptr;
}

std::string nameOf(BD::TagId id) {
    return BD::TAG_ID_TO_STRING(id).c_str();
}

TString<char> bytesFrom(const std::string& bytes, std::size_t start) {
    return TString<char>(bytes.data() + start, static_cast<unsigned>(bytes.size() - start));
}

bool isBlank(char c) {
    return c == '\0' || c == '\xFF';
}

class Checker {
public:
    Checker(const std::string& bytes, bool isDevice) : m_bytes(bytes), m_isDevice(isDevice) {}

    CheckedImage check() {
        CBoardDescr descriptor;
        String error;
        const bool isGood = descriptor.importBD(bytesFrom(m_bytes, 0), error).isSuccess();
        bool isEnded = false;
        for (const BD::Tag& tag : descriptor.getTags()) {
            if (tag.id == 0)
                isEnded = true;
            else
                checkTag(tag);
        }
        if (!isGood) {
            add(Finding::Weight::CORRUPT, m_position, error.c_str());
            m_result.isCorrupt = true;
        } else if (isEnded) {
            checkBehind(terminatorEnd());
            m_position = std::min(m_position + HEADER_BYTES, m_bytes.size());
        } else {
            const bool isStray = m_position < m_bytes.size();
            add(Finding::Weight::WARNING, m_position,
                std::string("the image ends ") + (isStray ? "with a single byte and " : "") +
                    "without a terminator (expected 00 00 00 04)");
        }
        m_result.usedBytes = m_position;
        return m_result;
    }

private:
    void add(Finding::Weight weight, std::size_t offset, const std::string& text) {
        m_result.findings.push_back({weight, offset, text});
    }

    void checkTag(const BD::Tag& tag) {
        const KnownTags* const known = knownTag(tag.id);
        const auto warn = [&](const std::string& text) {
            add(Finding::Weight::WARNING, m_position, nameOf(tag.id) + ": " + text);
        };
        if (const std::string size = wrongSizeOf(tag); !size.empty())
            warn("has " + size);
        if (tag.length % 2 != 0)
            warn("has an odd length of " + std::to_string(tag.length) +
                 "; storing and loading it adds a zero byte");
        const auto [former, isFirst] = m_firstOf.emplace(tag.id, m_position);
        if (!isFirst && known && tag.id != MAC_TAG)
            warn("stands at " + std::to_string(former->second) + " already (expected one)");
        m_position += HEADER_BYTES + tag.length;
        ++m_result.tags;
    }

    /// Where the terminator at the current position ends: its length is not read and may be
    /// missing.
    std::size_t terminatorEnd() const {
        const bool isWhole =
            m_bytes.compare(m_position, HEADER_BYTES, std::string("\0\0\0\4", HEADER_BYTES)) == 0;
        return m_position + (isWhole ? HEADER_BYTES : 2);
    }

    void checkBehind(std::size_t start) {
        const auto stray = std::find_if_not(m_bytes.begin() + static_cast<std::ptrdiff_t>(start),
                                            m_bytes.end(), isBlank);
        if (stray == m_bytes.end())
            return;
        const auto weight = m_isDevice ? Finding::Weight::NOTE : Finding::Weight::WARNING;
        CBoardDescr behind;
        String ignored;
        static_cast<void>(behind.importBD(bytesFrom(m_bytes, start), ignored)); // shows by its tags
        const unsigned tags = behind.getTags().size() - behind.getNumberOfTag(0);
        if (tags > 0)
            add(weight, start,
                std::to_string(tags) + (tags == 1 ? " tag" : " tags") +
                    " behind the terminator, from " + nameOf(behind.getTags().begin()->id) +
                    " on; no load reads what stands there");
        else
            add(weight, static_cast<std::size_t>(stray - m_bytes.begin()),
                "bytes behind the terminator that are neither 0x00 nor 0xFF");
    }

    const std::string& m_bytes;
    const bool m_isDevice;
    std::size_t m_position = 0;
    std::map<BD::TagId, std::size_t> m_firstOf;
    CheckedImage m_result;
};

} // namespace

std::string wrongSizeOf(const BD::Tag& tag) {
    const KnownTags* const known = knownTag(tag.id);
    if (!known || known->size == 0 || known->size == tag.length)
        return {};
    return std::to_string(tag.length) + (tag.length == 1 ? " byte" : " bytes") + " (expected " +
           std::to_string(known->size) + ")";
}

CheckedImage checkImage(const std::string& bytes, bool isDevice) {
    return Checker(bytes, isDevice).check();
}

} // namespace board
