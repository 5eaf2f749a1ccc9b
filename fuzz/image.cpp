// Loads arbitrary bytes as a descriptor image and compares the result with what an independent
// reader finds. Then checks the typed access, the reports and an edit, and that an image and its
// JSON form can be converted into each other without loss.

#include <algorithm>
#include <cstdint>
#include <vector>

#include "CBoardDescr.h"
#include "InfoContainer.h"
#include "Oracle.h"
#include "descriptor/DescriptorCheck.h"
#include "descriptor/DescriptorEdit.h"
#include "descriptor/TagsJson.h"

using fuzz::expect;

namespace {

constexpr char TERMINATOR[] = {0, 0, 0, 4};

struct Chunk {
    unsigned id;
    std::string data;
    bool operator==(const Chunk& other) const { return id == other.id && data == other.data; }
};

/// An independent reader of an image.
struct Walk {
    explicit Walk(const std::string& image) {
        const auto byteAt = [&](std::size_t i) {
            return i < image.size() ? static_cast<unsigned char>(image[i]) : 0U;
        };
        while (end + 2 <= image.size()) {
            const unsigned id = byteAt(end) << 8 | byteAt(end + 1);
            const std::size_t length = byteAt(end + 2) << 8 | byteAt(end + 3);
            if (id == 0 || id == 0xFFFF) {
                hasTerminator = true;
                return;
            }
            if (length < 4 || length > image.size() - end) {
                fault = "at pos=" + std::to_string(end + (length < 4 ? 2 : 4));
                return;
            }
            chunks.push_back({id, image.substr(end + 4, length - 4)});
            end += length;
        }
    }
    std::vector<Chunk> chunks; ///< without the terminator
    std::size_t end = 0;       ///< offset of the first byte after the chunks
    bool hasTerminator = false;
    std::string fault; ///< how the error message must end; "" if the image is intact
};

TString<char> asBytes(const std::string& text) {
    return TString<char>(text.data(), static_cast<unsigned>(text.size()));
}

std::string asText(const TString<char>& bytes) {
    return std::string(bytes.data(), bytes.length());
}

std::vector<Chunk> chunksOf(const CBoardDescr& descriptor) {
    std::vector<Chunk> chunks;
    for (const BD::Tag& tag : descriptor.getTags()) {
        expect(tag.length == tag.data.length(), "a tag's length is that of its data");
        chunks.push_back({static_cast<unsigned>(tag.id), asText(tag.data)});
    }
    return chunks;
}

std::string imageOf(const std::vector<Chunk>& chunks) {
    std::string image;
    for (const Chunk& chunk : chunks) {
        const std::string data = chunk.data + std::string(chunk.data.size() % 2, '\0');
        for (const std::size_t number : {std::size_t{chunk.id}, data.size() + 4})
            image += {static_cast<char>(number >> 8), static_cast<char>(number)};
        image += data;
    }
    return image;
}

std::string exported(CBoardDescr& descriptor) {
    TString<char> image;
    String error;
    expect(descriptor.exportBD(image, error).isSuccess() && error.isEmpty(),
           "storing always succeeds");
    return asText(image);
}

/// Reads a tag with every typed operation. `index` counts only tags with the chunk's identifier.
void readTyped(CBoardDescr& descriptor, const Chunk& chunk, unsigned index) {
    const auto id = static_cast<BD::TagId>(chunk.id);
    const std::size_t size = chunk.data.size();
    const auto value = [&](std::size_t from, std::size_t to) {
        unsigned number = 0;
        for (std::size_t i = from; i < to; ++i)
            number = number << 8 | static_cast<unsigned char>(chunk.data[i]);
        return number;
    };
    constexpr unsigned UNTOUCHED = 77;
    const auto read = [&](auto out, auto operation, bool succeeds, unsigned number) {
        out = UNTOUCHED;
        String error;
        const bool done = (descriptor.*operation)(id, index, out, error).isSuccess();
        expect(done == succeeds, "a number is read if its width fits");
        expect(out == (succeeds ? number : UNTOUCHED),
               "a number is that of its bytes, else left alone");
        expect((error == CBoardDescr::ERR_WRONG_TAG_SIZE) == !succeeds,
               "a wrong width is reported");
    };
    const auto exact = [&](std::size_t width) { return size == width ? value(0, width) : 0; };
    read(static_cast<unsigned char>(0), &CBoardDescr::getTagUInt8, size == 1, exact(1));
    read(static_cast<unsigned short>(0), &CBoardDescr::getTagUInt16, size == 2, exact(2));
    read(0UL, &CBoardDescr::getTagUInt32, size == 4, exact(4));
    read(0U, &CBoardDescr::getTagUInt, size <= 4, exact(1) | exact(2) | exact(4));

    String text, error;
    TString<char> data;
    expect(descriptor.getTagString(id, index, text, error).isSuccess() &&
               std::string(text.c_str(), text.length()) == chunk.data,
           "a text is its bytes");
    expect(descriptor.getTag(id, index, data, error).isSuccess() && asText(data) == chunk.data,
           "data is what the image holds");
    if (id == 1) {
        String mac("untouched");
        unsigned interface = UNTOUCHED;
        const bool isRead = descriptor.getMacAddress(index, mac, interface, error).isSuccess();
        String wanted("untouched");
        if (size == 8)
            wanted = String::format("%02X:%02X:%02X:%02X:%02X:%02X", value(0, 1), value(1, 2),
                                    value(2, 3), value(3, 4), value(4, 5), value(5, 6));
        expect(isRead == (size == 8) && mac == wanted, "an address is its six bytes");
        expect(interface == (size == 8 ? value(6, 8) : UNTOUCHED), "an interface is the next two");
    }
}

void checkAccess(CBoardDescr& descriptor, const std::vector<Chunk>& chunks) {
    constexpr std::size_t ENOUGH = 24; // not all: each lookup starts at the front of the list
    std::vector<unsigned> count(0x10000);
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        const unsigned index = count[chunks[i].id]++;
        if (i < ENOUGH || i + 1 == chunks.size())
            readTyped(descriptor, chunks[i], index);
    }
    if (chunks.empty())
        return;
    const unsigned id = chunks.back().id;
    expect(descriptor.getNumberOfTag(static_cast<BD::TagId>(id)) == count[id],
           "all tags are counted");
    String error;
    expect(!descriptor.getTag(static_cast<BD::TagId>(id), count[id], error) && !error.isEmpty(),
           "no tag is found behind the last occurrence");
}

void checkReports(const CBoardDescr& descriptor, const std::vector<Chunk>& chunks) {
    std::size_t rows = 1;
    for (const Chunk& chunk : chunks)
        rows += chunk.id == 3 ? 0 : chunk.id == 45 && chunk.data.size() == 4 ? 2 : 1;
    InfoContainer formatted, raw, flat;
    descriptor.getInfo(formatted, 9, 0, 0, 0, "");
    expect(formatted.getRows().size() == rows, "a row for each tag but the hidden ones");
    descriptor.getInfo(flat, 1, 0, 0, 0, "");
    expect(flat.getRows().size() == 1, "nothing below the level that is asked for");
    descriptor.getRawInfo(raw, 9, 0, 0, 0, "");
    expect(raw.getRows().size() == chunks.size() + 1, "a raw row for each tag");
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        String value = String::format("len: %.2d  data:", static_cast<int>(chunks[i].data.size()));
        for (const char c : chunks[i].data)
            value.concatf(" %02x", static_cast<unsigned char>(c));
        if (chunks[i].data.empty())
            value.concat(" ");
        expect(raw.getRows()[i + 1].value == value, "a raw row has all bytes");
    }
}

/// Checks the host's `TagImage` of the image, and the findings of the host's own check.
void checkImage(const std::string& image, const Walk& walk) {
    const board::TagImage parsed(image);
    expect(parsed.isCorrupt() == !walk.fault.empty(),
           "the value says whether the image is corrupt");
    std::size_t offset = 0;
    std::vector<Chunk> chunks;
    for (const board::ImageTag& each : parsed.tags()) {
        expect(each.offset == offset, "a tag has the offset of its chunk");
        offset += parsed.chunkOf(each).size();
        chunks.push_back({static_cast<unsigned>(each.tag.id), asText(each.tag.data)});
    }
    expect(chunks == walk.chunks, "the value has the tags that load");
    expect(parsed.terminator().has_value() == walk.hasTerminator, "and the terminator");
    const std::size_t used = walk.hasTerminator ? std::min(walk.end + 4, image.size()) : walk.end;
    expect(parsed.usedBytes() == used, "the value counts the bytes that they take");
    for (const bool isDevice : {false, true}) {
        std::size_t last = 0, corrupt = 0;
        for (const board::Finding& finding : board::checkImage(parsed, isDevice)) {
            expect(finding.offset >= last && finding.offset <= image.size(),
                   "findings are ordered by offset");
            last = finding.offset;
            corrupt += finding.weight == board::Finding::Weight::CORRUPT;
        }
        expect(corrupt == parsed.isCorrupt(), "one finding reports the corruption");
    }
}

/// Sets the first tag and removes it. All other tags must keep their bytes, even in chunks of odd
/// length.
void checkEdit(const std::string& image, const Walk& walk) {
    const std::string end(TERMINATOR, sizeof TERMINATOR);
    board::DescriptorEdit edit{board::TagImage(image)};
    expect(edit.image() == image.substr(0, walk.end) + end, "an edit copies what it leaves alone");
    if (walk.chunks.empty())
        return;
    const Chunk& first = walk.chunks.front();
    const std::string rest = image.substr(4 + first.data.size(), walk.end - 4 - first.data.size());
    board::Assignment assignment;
    assignment.place.id = static_cast<BD::TagId>(first.id);
    assignment.data = asBytes(first.data + "?");
    edit.set(assignment);
    expect(edit.image() == imageOf({{first.id, first.data + "?"}}) + rest + end,
           "a tag is set at its position");
    edit.remove(assignment.place);
    expect(edit.image() == rest + end, "one tag is removed");
}

void checkWayBack(CBoardDescr& descriptor, std::vector<Chunk> chunks) {
    const std::string image = exported(descriptor);
    expect(image == imageOf(chunks), "storing makes a chunk of each tag, padded to even length");
    const std::string dump = board::tagsToJson(board::TagImage(image));
    expect(board::imageOf(board::tagsFromJson(dump, "dump")) == image,
           "a dump builds the same image");
    CBoardDescr loaded;
    board::TagImage(image).loadInto(loaded);
    for (Chunk& chunk : chunks)
        chunk.data += std::string(chunk.data.size() % 2, '\0');
    expect(chunksOf(loaded) == chunks, "what is stored loads as the same list");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string image = fuzz::textOf(bytes, size);
    const Walk walk(image);
    std::vector<Chunk> chunks = walk.chunks;
    if (walk.hasTerminator)
        chunks.push_back({0, ""});
    CBoardDescr descriptor;
    String error;
    expect(descriptor.importBD(asBytes(image), error).isSuccess() == walk.fault.empty(),
           "what is corrupt fails, all else loads");
    const std::string message = error.c_str();
    expect(walk.fault.empty()
               ? message.empty()
               : message.rfind("CORRUPTED BOARD DESCRIPTOR: ", 0) == 0 &&
                     message.size() > walk.fault.size() &&
                     message.substr(message.size() - walk.fault.size()) == walk.fault,
           "the message has the place");
    expect(chunksOf(descriptor) == chunks, "the tags before a fault or the end are held");
    checkAccess(descriptor, chunks);
    checkReports(descriptor, chunks);
    checkImage(image, walk);
    checkEdit(image, walk);
    checkWayBack(descriptor, chunks);
    return 0;
}
