// The board descriptor: loading, storing, finding and reporting, each compared with the least code
// that does the same.

#include <cstdio>
#include <cstdlib>
#include <list>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include "BoardImage.h"
#include "CBoardDescr.h"
#include "InfoContainer.h"
#include "Succeed.h"
#include "TemporaryFile.h"

namespace {

constexpr unsigned READ_CHUNK = 128;

unsigned get16(const std::string& image, std::size_t at) {
    return static_cast<unsigned>(static_cast<unsigned char>(image[at])) << 8 |
           static_cast<unsigned char>(image[at + 1]);
}

/// An image of `size` bytes with `tags` tags. The data of every tag has an even length.
std::string makeImage(std::size_t size, unsigned tags) {
    std::string image;
    for (unsigned i = 0; i < tags; ++i) {
        const std::size_t chunk = (size - 4 - image.size()) / (tags - i) & ~std::size_t{1};
        put16(image, i == tags - 1 ? 0x800E : 100 + i);
        put16(image, chunk);
        image.append(chunk - 4, static_cast<char>('a' + i % 26));
    }
    return image.append(size - image.size(), '\xFF');
}

std::string readDevice(const char* path) {
    std::string image;
    char chunk[READ_CHUNK];
    const int file = ::open(path, O_RDONLY);
    for (ssize_t got; (got = ::read(file, chunk, sizeof chunk)) > 0;)
        image.append(chunk, static_cast<std::size_t>(got));
    ::close(file);
    return image;
}

struct Chunk {
    unsigned id;
    std::string data;
};

std::vector<Chunk> copyChunks(const std::string& image) {
    std::vector<Chunk> chunks;
    for (std::size_t at = 0; at + 4 <= image.size();) {
        const unsigned id = get16(image, at), length = get16(image, at + 2);
        if (id == 0xFFFF || length < 4 || length > image.size() - at)
            break;
        chunks.push_back({id, image.substr(at + 4, length - 4)});
        at += length;
    }
    return chunks;
}

void load(benchmark::State& state, const std::string& image) {
    const TemporaryFile device(image);
    CBoardDescr board(device.path(), READ_CHUNK, 65537);
    String error;
    for (auto _ : state)
        succeed(board.readBD(error));
}

void loadFloor(benchmark::State& state, const std::string& image) {
    const TemporaryFile device(image);
    std::vector<Chunk> held;
    for (auto _ : state)
        held = copyChunks(readDevice(device.path()));
}

void store(benchmark::State& state, const std::string& image) {
    const TemporaryFile device(image);
    CBoardDescr board(device.path(), READ_CHUNK, 65537);
    String error;
    succeed(board.readBD(error));
    for (auto _ : state)
        succeed(board.writeBD(error));
}

void storeFloor(benchmark::State& state, const std::string& image) {
    const TemporaryFile device(image);
    const std::vector<Chunk> held = copyChunks(image);
    for (auto _ : state) {
        std::string written;
        for (const Chunk& chunk : held) {
            put16(written, chunk.id);
            put16(written, chunk.data.size() + 4);
            written += chunk.data;
        }
        const int file = ::open(device.path(), O_WRONLY);
        if (::write(file, written.data(), written.size()) != static_cast<ssize_t>(written.size()))
            std::abort();
        ::close(file);
    }
}

void lookUp(benchmark::State& state) {
    const std::string image = makeBoardImage();
    CBoardDescr board;
    String error;
    succeed(
        board.importBD(TString<char>(image.data(), static_cast<unsigned>(image.size())), error));
    unsigned value = 0;
    for (auto _ : state) {
        succeed(board.getTagUInt(0x800E, 0, value, error));
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(lookUp)->Name("getTagUInt of the last of 40 tags");

void lookUpFloor(benchmark::State& state) {
    const std::vector<Chunk> chunks = copyChunks(makeBoardImage());
    const std::list<Chunk> held(chunks.begin(), chunks.end());
    for (auto _ : state) {
        for (const Chunk& chunk : held)
            if (chunk.id == 0x800E) {
                unsigned value = get16(chunk.data, 0) << 16 | get16(chunk.data, 2);
                benchmark::DoNotOptimize(value);
                break;
            }
    }
}
BENCHMARK(lookUpFloor)->Name("getTagUInt of the last of 40 tags/floor");

void report(benchmark::State& state) {
    const std::string image = makeBoardImage();
    CBoardDescr board;
    String error;
    succeed(
        board.importBD(TString<char>(image.data(), static_cast<unsigned>(image.size())), error));
    for (auto _ : state) {
        InfoContainer rows;
        benchmark::DoNotOptimize(board.getInfo(rows, 9, 0, 9, 0, String()));
    }
}
BENCHMARK(report)->Name("formatted report of 40 tags");

/// Formats the same rows as `report` into two buffers, which every row overwrites.
void reportFloor(benchmark::State& state) {
    const std::vector<Chunk> chunks = copyChunks(makeBoardImage());
    for (auto _ : state)
        for (const Chunk& chunk : chunks) {
            char key[32], value[64];
            const auto byte = [&chunk](std::size_t i) {
                return static_cast<unsigned char>(chunk.data[i]);
            };
            const auto number = [&chunk] {
                return get16(chunk.data, 0) << 16 | get16(chunk.data, 2);
            };
            std::snprintf(key, sizeof key, "Tag%d", static_cast<int>(chunk.id));
            if (chunk.id == 1)
                std::snprintf(value, sizeof value, "%02X:%02X:%02X:%02X:%02X:%02X iface=%d",
                              byte(0), byte(1), byte(2), byte(3), byte(4), byte(5),
                              static_cast<int>(get16(chunk.data, 6)));
            else if (chunk.id == 2)
                std::snprintf(value, sizeof value, "%u.%u.%u.%u", byte(0), byte(1), byte(2),
                              byte(3));
            else if (chunk.id == 45)
                std::snprintf(value, sizeof value, "%02x %02x", byte(0), byte(1));
            else if (chunk.id >= 10 && chunk.id <= 13)
                std::snprintf(value, sizeof value, "%s", chunk.data.c_str());
            else if (chunk.id >= 32768)
                std::snprintf(value, sizeof value, "%u", number());
            else
                std::snprintf(value, sizeof value, "0x%x", number());
            benchmark::DoNotOptimize(key);
            benchmark::DoNotOptimize(value);
        }
}
BENCHMARK(reportFloor)->Name("formatted report of 40 tags/floor");

void registerPair(const std::string& name, const std::string& image,
                  void (*figure)(benchmark::State&, const std::string&),
                  void (*floor)(benchmark::State&, const std::string&)) {
    benchmark::RegisterBenchmark(name.c_str(), figure, image);
    benchmark::RegisterBenchmark((name + "/floor").c_str(), floor, image);
}

const bool registered = [] {
    registerPair("load 512 bytes, 40 tags", makeBoardImage(), load, loadFloor);
    for (const unsigned tags : {1000U, 10000U}) {
        const std::string image = makeImage(65536, tags),
                          what = "64 KiB, " + std::to_string(tags) + " tags";
        registerPair("load " + what, image, load, loadFloor);
        registerPair("store " + what, image, store, storeFloor);
    }
    return true;
}();

} // namespace
