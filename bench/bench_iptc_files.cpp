// IPTC read and JPEG write per file, on generated JPEGs of three sizes: an
// APP0, a 16 KB APP1, an APP13 with a thumbnail resource and a 2 KB IPTC
// block, and entropy-coded data filling the rest. Reading maps the file and
// decodes the block into the store; writing rebuilds the file in memory,
// writes and flushes a temporary file and swaps it in (backup, move, commit).
#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "bench/BenchFolder.h"
#include "iptc/IPTC.h"

namespace {

using vliptc::bench::BenchFolder;
using Bytes = std::vector<std::uint8_t>;

void Put16(Bytes& out, std::size_t value) {
    out.push_back(static_cast<std::uint8_t>(value >> 8));
    out.push_back(static_cast<std::uint8_t>(value));
}

void Put32(Bytes& out, std::size_t value) {
    Put16(out, value >> 16);
    Put16(out, value & 0xFFFF);
}

void Append(Bytes& out, const std::string& text) {
    out.insert(out.end(), text.begin(), text.end());
}

Bytes Segment(std::uint8_t marker, const Bytes& payload) {
    Bytes out{0xFF, marker};
    Put16(out, payload.size() + 2);
    out.insert(out.end(), payload.begin(), payload.end());
    return out;
}

Bytes Resource(std::uint16_t id, const Bytes& data) {
    Bytes out;
    Append(out, "8BIM");
    Put16(out, id);
    Put16(out, 0);
    Put32(out, data.size());
    out.insert(out.end(), data.begin(), data.end());
    if (data.size() % 2 != 0) out.push_back(0);
    return out;
}

Bytes IptcBlock() {
    Bytes block{0x1C, 0x02, 0x00, 0x00, 0x02, 0x00, 0x02};
    auto dataset = [&block](std::uint8_t id, const std::string& value) {
        block.insert(block.end(), {0x1C, 0x02, id});
        Put16(block, value.size());
        Append(block, value);
    };
    dataset(5, "Benchmark image");
    for (int i = 0; i < 40; ++i) dataset(25, "keyword number " + std::to_string(i));
    dataset(120, std::string(1200, 'c'));
    dataset(80, "A. Photographer");
    if (block.size() % 2 != 0) block.push_back(0);
    return block;
}

Bytes GeneratedJpeg(std::size_t size) {
    std::mt19937 random(42);
    Bytes file{0xFF, 0xD8};
    Bytes jfif;
    Append(jfif, std::string("JFIF\0\1\1\0\0\1\0\1\0\0", 14));
    const Bytes app0 = Segment(0xE0, jfif);
    Bytes exif(16 * 1024, 0x11);
    const Bytes app1 = Segment(0xE1, exif);
    Bytes section;
    Append(section, std::string("Photoshop 3.0\0", 14));
    const Bytes thumbnail(6000, 0x22);
    const Bytes resolution(16, 0x01);
    for (const Bytes& r : {Resource(0x03ED, resolution), Resource(0x0404, IptcBlock()), Resource(0x040C, thumbnail)}) {
        section.insert(section.end(), r.begin(), r.end());
    }
    const Bytes app13 = Segment(0xED, section);
    for (const Bytes* s : {&app0, &app1, &app13}) file.insert(file.end(), s->begin(), s->end());
    file.insert(file.end(), {0xFF, 0xDA, 0x00, 0x02});
    while (file.size() + 2 < size) {
        const auto byte = static_cast<std::uint8_t>(random());
        file.push_back(byte);
        if (byte == 0xFF) file.push_back(0x00);  // stuffed, as in real scans
    }
    file.insert(file.end(), {0xFF, 0xD9});
    return file;
}

// The definitions and a generated JPEG of state.range(0) bytes in folder;
// the store initialised from them.
void Prepare(BenchFolder& folder, CIPTC& store, benchmark::State& state, const std::string& name) {
    folder.Write("vliptctags.ipt",
                 "{\nID 5\nNAME Title\n}\n{\nID 25\nNAME Keywords\nREPEATABLE 1\n}\n"
                 "{\nID 80\nNAME By-line\n}\n{\nID 120\nNAME Caption\n}\n");
    const Bytes image = GeneratedJpeg(static_cast<std::size_t>(state.range(0)));
    folder.Write(name, std::string_view(reinterpret_cast<const char*>(image.data()), image.size()));
    if (store.Initialize(folder.Path(), folder.Path()) != CIPTC::kSuccess) {
        state.SkipWithError("the store did not initialise");
    }
}

void BM_ReadJpeg(benchmark::State& state) {
    BenchFolder folder;
    CIPTC store;
    Prepare(folder, store, state, "image.jpg");
    const std::string path = folder.File("image.jpg");
    for (auto _ : state) {
        CIPTC::SIPTCFormatInfo format;
        if (store.ReadIPTCBlob(path.c_str(), format) != CIPTC::kSuccess) state.SkipWithError("read failed");
        benchmark::DoNotOptimize(store.Fields().data());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * state.range(0));
}

void BM_WriteJpeg(benchmark::State& state) {
    BenchFolder folder;
    CIPTC store;
    Prepare(folder, store, state, "image.jpg");
    const std::string path = folder.File("image.jpg");
    CIPTC::SIPTCFormatInfo format;
    if (store.ReadIPTCBlob(path.c_str(), format) != CIPTC::kSuccess) state.SkipWithError("read failed");
    store.SetField(25, CVLProperty(std::string("added by the benchmark")), false);
    for (auto _ : state) {
        if (store.WriteIPTCBlob(path.c_str(), format) != CIPTC::kSuccess) state.SkipWithError("write failed");
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * state.range(0));
}

}  // namespace

BENCHMARK(BM_ReadJpeg)->Arg(64 << 10)->Arg(1 << 20)->Arg(8 << 20)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_WriteJpeg)->Arg(64 << 10)->Arg(1 << 20)->Arg(8 << 20)->Unit(benchmark::kMicrosecond);
