// Fuzz driver for octave-engine's decoder (get_octave_value), built with g++ and ASan because
// clang cannot compile Octave's headers: replays a corpus of arrays, then mutates them at
// random for a bounded time. What decodes is encoded again (put_octave_value) and must decode
// to the same bytes. A crash or a failed check leaves the input in the findings folder.
//
// Usage: octave_codec_fuzz SECONDS CORPUS_DIR FINDINGS_DIR [SEED]
#include <unistd.h>

#include <octave/oct.h>
#include <octave/interpreter.h>
#include <sanitizer/common_interface_defs.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "octave_codec.h"
#include "wire_codec.h"

namespace {

using Bytes = std::vector<unsigned char>;
namespace fs = std::filesystem;

fs::path findings;
const Bytes* current = nullptr;

void save(const Bytes& input, const std::string& kind) {
    fs::create_directories(findings);
    const fs::path file =
        findings / (kind + "-" + std::to_string(std::hash<std::string>{}(std::string(input.begin(), input.end()))));
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(input.data()), static_cast<std::streamsize>(input.size()));
    std::fprintf(stderr, "octave_codec_fuzz: input saved as %s\n", file.c_str());
}

// ASan's last words: keep the input that killed us.
void on_death() {
    if (current != nullptr) save(*current, "crash");
}

// Encodes a decoded value as the engine would send it; empty when Octave refused.
std::string encode(const octave_value& v) {
    tamlo::wire::Writer w(tamlo::wire::Kind::value);
    try {
        tamlo::engine::put_octave_value(w, v);
    } catch (const octave::execution_exception&) {
        return {};
    }
    return w.too_long() ? std::string() : w.finish().substr(tamlo::wire::header_length + 1);
}

// Longer than this for one small input is a finding: the frame's length should bound the work.
constexpr auto slow_input = std::chrono::seconds(5);

// Decodes one input; true when it decoded. Checks that what decodes survives a round trip.
bool run_one(const Bytes& input) {
    current = &input;
    const auto start = std::chrono::steady_clock::now();
    tamlo::wire::Reader r(input.data(), input.size());
    octave_value v;
    bool ok = false;
    try {
        ok = tamlo::engine::get_octave_value(r, v) && r.expect_end();
    } catch (const std::bad_alloc&) {
        ok = false;  // the engine answers this with an error frame
    }
    if (!ok && r.error().empty()) {
        save(input, "no-message");
        std::abort();
    }
    if (ok) {
        const std::string once = encode(v);
        tamlo::wire::Reader again(once.data(), once.size());
        octave_value w;
        if (once.empty() || !tamlo::engine::get_octave_value(again, w) || !again.expect_end() || encode(w) != once) {
            save(input, "round-trip");
            std::abort();
        }
    }
    if (std::chrono::steady_clock::now() - start > slow_input) {
        save(input, "slow");
        std::abort();
    }
    current = nullptr;
    return ok;
}

std::mt19937_64 rng;

size_t below(size_t n) { return n == 0 ? 0 : std::uniform_int_distribution<size_t>(0, n - 1)(rng); }

// One to four random edits of b, drawing pieces from the pool.
Bytes mutate(Bytes b, const std::vector<Bytes>& pool) {
    static const uint64_t interesting[] = {0,          1,          2,          3,          63,         64,
                                           255,        256,        0x7fffffff, 0x80000000, 0xffffffff, 1ull << 28,
                                           1ull << 32, 1ull << 62, 1ull << 63, ~0ull};
    for (size_t steps = 1 + below(4); steps > 0; --steps) {
        switch (b.empty() ? 3 : below(4)) {
            case 0: b[below(b.size())] = static_cast<unsigned char>(below(256)); break;
            case 1: {  // an interesting little-endian number of 1, 4 or 8 bytes
                const size_t widths[] = {1, 4, 8};
                const size_t width = widths[below(3)], at = below(b.size());
                const uint64_t v = interesting[below(std::size(interesting))];
                for (size_t k = 0; k < width && at + k < b.size(); ++k)
                    b[at + k] = static_cast<unsigned char>(v >> (8 * k));
                break;
            }
            case 2: {  // erase a range
                const size_t at = below(b.size()), n = 1 + below(std::min<size_t>(16, b.size() - at));
                b.erase(b.begin() + static_cast<long>(at), b.begin() + static_cast<long>(at + n));
                break;
            }
            default: {  // copy a range of an input, this one's or another's, in
                const Bytes& other = pool[below(pool.size())];
                if (other.empty()) break;
                const size_t from = below(other.size()), n = 1 + below(std::min<size_t>(64, other.size() - from));
                const Bytes piece(other.begin() + static_cast<long>(from), other.begin() + static_cast<long>(from + n));
                b.insert(b.begin() + static_cast<long>(below(b.size() + 1)), piece.begin(), piece.end());
                break;
            }
        }
        if (b.size() > 4096) b.resize(4096);
    }
    return b;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 4) {
        std::cerr << "usage: octave_codec_fuzz SECONDS CORPUS_DIR FINDINGS_DIR [SEED]\n";
        return 64;
    }
    const double seconds = std::atof(argv[1]);
    findings = argv[3];
    const uint64_t seed = argc > 4 ? std::strtoull(argv[4], nullptr, 10)
                                   : static_cast<uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    __sanitizer_set_death_callback(on_death);

    octave::interpreter interp;
    interp.initialize_history(false);
    interp.initialize_load_path();
    interp.initialize();
    if (!interp.initialized() || interp.execute() != 0) {
        std::cerr << "octave_codec_fuzz: the Octave interpreter did not start\n";
        return 3;
    }

    std::vector<Bytes> pool;
    for (const auto& entry : fs::directory_iterator(argv[2])) {
        std::ifstream in(entry.path(), std::ios::binary);
        pool.emplace_back(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    if (pool.empty()) {
        std::cerr << "octave_codec_fuzz: no corpus in " << argv[2] << "\n";
        return 64;
    }
    const size_t seeds = pool.size();
    for (const Bytes& b : pool) run_one(b);

    // Inputs that decode are kept as starting points, up to a bound: they reach deeper.
    constexpr size_t max_pool = 2000;
    rng.seed(seed);
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    size_t runs = 0, decoded = 0;
    while (std::chrono::steady_clock::now() < end) {
        for (int k = 0; k < 100; ++k, ++runs) {
            const Bytes input = mutate(pool[below(pool.size())], pool);
            if (run_one(input)) {
                ++decoded;
                if (pool.size() < max_pool) pool.push_back(input);
            }
        }
    }
    std::printf("octave_codec_fuzz: seed %llu, %zu seeds, %zu runs, %zu decoded, no findings\n",
                static_cast<unsigned long long>(seed), seeds, runs, decoded);
    std::fflush(stdout);
    ::_exit(0);  // tearing the interpreter down is slow and not needed
}
