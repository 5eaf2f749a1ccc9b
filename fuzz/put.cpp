// Puts tags into an image and compares the result with that of a simple model. A repeated put must
// change nothing.

#include <optional>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

#include "Oracle.h"
#include "base/Error.h"
#include "descriptor/DescriptorEdit.h"

using fuzz::expect;

namespace {

struct Chunk {
    BD::TagId id;
    std::string data;
};
using Chunks = std::vector<Chunk>;

std::string padded(const std::string& data) {
    return data + std::string(data.size() % 2, '\0');
}

bool isAddress(const Chunk& chunk) {
    return chunk.id == 1 && chunk.data.size() == 8;
}

/// The list after the put; empty if the put must fail.
std::optional<Chunks> putInModel(Chunks chunks, const Chunk& put, std::optional<unsigned> index) {
    constexpr std::size_t ADDRESS = 6;
    std::vector<std::size_t> same, port;
    bool isElsewhere = false;
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        if (chunks[i].id != put.id)
            continue;
        same.push_back(i);
        if (isAddress(chunks[i]) && isAddress(put)) {
            if (chunks[i].data.substr(ADDRESS) == put.data.substr(ADDRESS))
                port.push_back(i);
            else if (chunks[i].data.substr(0, ADDRESS) == put.data.substr(0, ADDRESS))
                isElsewhere = true;
        }
    }
    const bool isByPort = isAddress(put) && !index;
    if (isByPort) {
        for (const std::size_t i : port)
            if (chunks[i].data == put.data)
                return chunks;
        if (port.size() > 1 || (port.empty() && isElsewhere))
            return std::nullopt;
    }
    const std::vector<std::size_t>& places = isByPort ? port : same;
    const unsigned place = index.value_or(0);
    if (place < places.size()) {
        if (chunks[places[place]].data != put.data) // padding alone is not a change
            chunks[places[place]].data = padded(put.data);
        return chunks;
    }
    if (place > places.size())
        return std::nullopt;
    const std::size_t at = put.id == 1 && !same.empty() ? same.back() + 1 : chunks.size();
    chunks.insert(chunks.begin() + static_cast<std::ptrdiff_t>(at), {put.id, padded(put.data)});
    return chunks;
}

std::string imageOf(const Chunks& chunks) {
    const auto number = [](std::size_t value) {
        return std::string{static_cast<char>(value >> 8), static_cast<char>(value)};
    };
    std::string image;
    for (const Chunk& chunk : chunks)
        image +=
            number(static_cast<std::size_t>(chunk.id)) + number(chunk.data.size() + 4) + chunk.data;
    return image + number(0) + number(4);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    FuzzedDataProvider input(bytes, size);
    Chunks model;
    board::DescriptorEdit edit{board::TagImage(imageOf(model))};
    while (input.remaining_bytes() > 0) {
        // Uses few different tags, addresses and ports, so that equal ones are frequent.
        Chunk put{input.ConsumeIntegralInRange<BD::TagId>(1, 3), ""};
        if (put.id == 1 && input.ConsumeBool())
            put.data = {2, 0,
                        0, 0,
                        0, input.ConsumeIntegralInRange<char>(0, 3),
                        0, input.ConsumeIntegralInRange<char>(0, 3)};
        else
            put.data = input.ConsumeRandomLengthString(9);
        std::optional<unsigned> index;
        if (input.ConsumeBool())
            index = input.ConsumeIntegralInRange<unsigned>(0, 3);
        board::Assignment assignment;
        assignment.place = {put.id, index.value_or(0)};
        assignment.hasIndex = index.has_value();
        assignment.data = TString<char>(put.data.data(), static_cast<unsigned>(put.data.size()));
        const std::optional<Chunks> expected = putInModel(model, put, index);
        for (const bool isRepeated : {false, true}) {
            bool isDone = true;
            const std::size_t changes = edit.changes().size();
            try {
                edit.put(assignment);
            } catch (const board::Error&) {
                isDone = false;
            }
            expect(isDone == expected.has_value(), "a put fails only if its place is not certain");
            expect(!isRepeated || edit.changes().size() == changes, "a repeated put is no change");
            model = expected.value_or(model);
            expect(edit.image() == imageOf(model), "a put sets one tag or adds it");
        }
    }
    return 0;
}
