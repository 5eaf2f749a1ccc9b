// Edits a list of tags with random operations, and a model of the list in the same way. Then
// compares the edited list with an expected one: the original list, perhaps with patterns in place
// of data and with two tags swapped. Checks the differences against the model.

#include <algorithm>
#include <cstdint>
#include <map>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

#include "Entry.h"
#include "Oracle.h"
#include "base/Error.h"
#include "descriptor/DescriptorEdit.h"
#include "descriptor/TagsJson.h"
#include "descriptor/compare/TagCompare.h"

using board::DescriptorEdit;
using fuzz::Entry;
using fuzz::expect;

namespace {

using Model = std::vector<Entry>;

std::string padded(const std::string& data) {
    return data + std::string(data.size() % 2, '\0');
}

int someId(FuzzedDataProvider& data) {
    return data.PickValueInArray({1, 1, 5, 45, 0x800E, 65534});
}

std::string someData(FuzzedDataProvider& data) {
    if (data.ConsumeBool()) // an address
        return std::string("\x02\0\0\0\0", 5) +
               static_cast<char>(data.ConsumeIntegralInRange(0, 3)) + '\0' +
               static_cast<char>(data.ConsumeIntegralInRange(0, 1));
    return data.ConsumeRandomLengthString(6);
}

board::Assignment assignmentOf(int id, unsigned index, const std::string& data) {
    board::Assignment assignment;
    assignment.place = {id, index};
    assignment.data = TString<char>(data.data(), static_cast<unsigned>(data.size()));
    return assignment;
}

Model::iterator find(Model& model, int id, unsigned index) {
    return std::find_if(model.begin(), model.end(),
                        [&](const Entry& each) { return each.id == id && index-- == 0; });
}

struct Operand {
    int id;
    unsigned index;
    std::string data;
    std::size_t position;
};

/// An operation on the list and the same one on the model. `model` returns false if `edit` must
/// throw.
struct Operation {
    void (*edit)(DescriptorEdit& edit, const Operand& operand);
    bool (*model)(Model& model, const Operand& operand);
};

const Operation OPERATIONS[] = {
    {[](DescriptorEdit& edit, const Operand& operand) {
         edit.set(assignmentOf(operand.id, operand.index, operand.data));
     },
     [](Model& model, const Operand& operand) {
         const auto found = find(model, operand.id, operand.index);
         if (found != model.end())
             found->data = padded(operand.data);
         return found != model.end();
     }},
    {[](DescriptorEdit& edit, const Operand& operand) {
         edit.add(assignmentOf(operand.id, 0, operand.data));
     },
     [](Model& model, const Operand& operand) {
         model.push_back({operand.id, padded(operand.data)});
         return true;
     }},
    {[](DescriptorEdit& edit, const Operand& operand) {
         edit.insert(operand.position, assignmentOf(operand.id, 0, operand.data));
     },
     [](Model& model, const Operand& operand) {
         const auto place = std::min(operand.position, model.size());
         model.insert(model.begin() + static_cast<std::ptrdiff_t>(place),
                      {operand.id, padded(operand.data)});
         return true;
     }},
    {[](DescriptorEdit& edit, const Operand& operand) {
         edit.remove({operand.id, operand.index});
     },
     [](Model& model, const Operand& operand) {
         const auto found = find(model, operand.id, operand.index);
         const bool isThere = found != model.end();
         if (isThere)
             model.erase(found);
         return isThere;
     }},
};

void apply(DescriptorEdit& edit, Model& model, FuzzedDataProvider& data) {
    const Operation& operation =
        OPERATIONS[data.ConsumeIntegralInRange<std::size_t>(0, std::size(OPERATIONS) - 1)];
    const Operand operand{someId(data), data.ConsumeIntegralInRange(0U, 3U), someData(data),
                          data.ConsumeIntegralInRange<std::size_t>(0, 9)};
    bool isDone = true;
    try {
        operation.edit(edit, operand);
    } catch (const board::Error&) {
        isDone = false;
    }
    expect(isDone == operation.model(model, operand),
           "an edit fails exactly if its tag is missing");
}

/// What an entry of the expected list accepts.
struct Expected {
    enum class Kind { EXACT, ANY, SIZE, LETTERS, ADDRESS };
    Kind kind;
    Entry entry;

    bool accepts(const Entry& found) const {
        const std::string text = found.data.substr(0, found.data.find_last_not_of('\0') + 1);
        const std::string wanted = entry.data.substr(0, entry.data.find_last_not_of('\0') + 1);
        switch (kind) {
        case Kind::EXACT:
            return padded(entry.data) == padded(found.data);
        case Kind::ANY:
            return true;
        case Kind::SIZE:
            return found.data.size() == entry.data.size() ||
                   found.data.size() == padded(entry.data).size();
        case Kind::LETTERS:
            return text.size() == wanted.size() && text.find('\0') == std::string::npos;
        case Kind::ADDRESS:
            break;
        }
        return found.data.size() == 8 && found.data.substr(0, 6) >= entry.data.substr(0, 6) &&
               found.data.substr(0, 5) == entry.data.substr(0, 5) &&
               static_cast<unsigned char>(found.data[5]) <= 9;
    }

    std::string json() const {
        const std::string start = "{\"id\":" + std::to_string(entry.id) + ",";
        const std::string text = entry.data.substr(0, entry.data.find_last_not_of('\0') + 1);
        switch (kind) {
        case Kind::EXACT:
            break;
        case Kind::ANY:
            return start + "\"any\":true}";
        case Kind::SIZE:
            return start + "\"size\":" + std::to_string(entry.data.size()) + "}";
        case Kind::LETTERS:
            return start + "\"matches\":\".{" + std::to_string(text.size()) + "}\"}";
        case Kind::ADDRESS:
            return start + "\"from\":\"02:00:00:00:00:0" + std::to_string(entry.data[5]) +
                   "\",\"to\":\"02:00:00:00:00:09\"}";
        }
        std::string digits;
        for (const char c : entry.data)
            digits += {"0123456789abcdef"[static_cast<unsigned char>(c) >> 4],
                       "0123456789ABCDEF"[static_cast<unsigned char>(c) & 15]};
        return start + "\"hex\":\"" + digits + "\"}";
    }
};

Expected someExpectationOf(const Entry& entry, FuzzedDataProvider& data) {
    const bool isAddress = entry.data.size() == 8 && entry.data[0] == '\x02' &&
                           entry.data.find_first_not_of('\0', 1) >= 5 && entry.data[5] >= 0 &&
                           entry.data[5] <= 9;
    const auto kind = data.PickValueInArray({Expected::Kind::EXACT, Expected::Kind::EXACT,
                                             Expected::Kind::ANY, Expected::Kind::SIZE,
                                             Expected::Kind::LETTERS, Expected::Kind::ADDRESS});
    return {kind == Expected::Kind::ADDRESS && !isAddress ? Expected::Kind::EXACT : kind, entry};
}

/// Judges the differences between the expected list and the tags of the model.
void judge(const std::vector<board::TagDifference>& differences,
           const std::vector<Expected>& expected, const Model& model) {
    using Kind = board::TagDifference::Kind;
    const bool isEqual = std::equal(expected.begin(), expected.end(), model.begin(), model.end(),
                                    [](const Expected& one, const Entry& other) {
                                        return one.entry.id == other.id && one.accepts(other);
                                    });
    expect(differences.empty() == isEqual, "differences are found exactly if there are any");

    struct Count {
        int expected = 0, found = 0, missing = 0, extra = 0, different = 0;
        bool hasPattern = false;
        std::map<std::string, int> surplus; // by data: how many more are expected than found
    };
    std::map<int, Count> counts;
    for (const Expected& each : expected) {
        Count& count = counts[each.entry.id];
        ++count.expected;
        ++count.surplus[padded(each.entry.data)];
        count.hasPattern = count.hasPattern || each.kind != Expected::Kind::EXACT;
    }
    for (const Entry& each : model) {
        Count& count = counts[each.id];
        ++count.found;
        --count.surplus[padded(each.data)];
    }
    for (const board::TagDifference& each : differences) {
        Count& count = counts[each.id];
        count.missing += each.kind == Kind::MISSING ? 1 : 0;
        count.extra += each.kind == Kind::EXTRA ? 1 : 0;
        count.different += each.kind == Kind::DIFFERENT ? 1 : 0;
        expect(!each.text.empty() && each.text.find('\n') == std::string::npos,
               "a difference is one line");
    }
    for (const auto& [id, count] : counts) {
        expect(count.missing == std::max(0, count.expected - count.found) &&
                   count.extra == std::max(0, count.found - count.expected),
               "each tag too few is missing, each too many is extra");
        int unmatched = 0; // expected tags without an equal one
        for (const auto& [bytes, surplus] : count.surplus)
            unmatched += std::max(0, surplus);
        expect(count.hasPattern || count.different == unmatched - count.missing,
               "a tag with an equal one is not different");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    FuzzedDataProvider data(bytes, size);
    Model model;
    std::vector<Expected> expected;
    std::string start;
    for (auto i = data.ConsumeIntegralInRange(0, 6); i > 0; --i) {
        const Entry entry{someId(data), someData(data)};
        expected.push_back(someExpectationOf(entry, data));
        start += (start.empty() ? "" : ",") + Expected{Expected::Kind::EXACT, entry}.json();
        model.push_back({entry.id, padded(entry.data)});
    }
    if (!expected.empty() && data.ConsumeBool()) {
        const auto last = expected.size() - 1;
        std::swap(expected[data.ConsumeIntegralInRange<std::size_t>(0, last)],
                  expected[data.ConsumeIntegralInRange<std::size_t>(0, last)]);
    }
    std::string list = "[";
    for (const Expected& each : expected)
        list += (list.size() > 1 ? "," : "") + each.json();
    DescriptorEdit edit(
        board::TagImage(board::imageOf(board::tagsFromJson("[" + start + "]", "list"))));
    for (auto i = data.ConsumeIntegralInRange(0, 4); i > 0; --i)
        apply(edit, model, data);

    const board::TagImage image(edit.image());
    Model loaded;
    for (const board::ImageTag& each : image.tags())
        loaded.push_back({each.tag.id, std::string(each.tag.data.data(), each.tag.data.length())});
    expect(loaded == model, "an edited image holds what the model holds");
    judge(board::compareTags(board::readExpected(list + "]", "list"), image), expected, model);
    expect(board::compareTags(board::readExpected(image.bytes(), "image"), image).empty(),
           "an image is as it is expected to be");
    return 0;
}
