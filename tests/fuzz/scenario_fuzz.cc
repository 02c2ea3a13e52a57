// libFuzzer harness for the bench's scenario reader: an input is a scenario file, then a NUL,
// then the CSV file its series name ("series.csv"). Bad input must end as an InputError.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "input_error.h"
#include "scenario.h"

namespace {

// A folder of its own, removed when the fuzzer exits.
char folder_name[] = "/tmp/tamlo-scenario-fuzz-XXXXXX";

const std::string& folder() {
    static const std::string dir = [] {
        if (::mkdtemp(folder_name) == nullptr) std::abort();
        std::atexit([] { std::filesystem::remove_all(folder_name); });
        return std::string(folder_name);
    }();
    return dir;
}

void write_file(const std::string& path, const uint8_t* data, size_t size) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const auto* nul = static_cast<const uint8_t*>(std::memchr(data, 0, size));
    const size_t json_size = nul != nullptr ? static_cast<size_t>(nul - data) : size;
    const std::string scenario = folder() + "/scenario.json";
    write_file(scenario, data, json_size);
    if (nul != nullptr)
        write_file(folder() + "/series.csv", nul + 1, size - json_size - 1);
    else
        ::unlink((folder() + "/series.csv").c_str());
    try {
        tamlo_host::read_scenario(scenario);
    } catch (const tamlo_host::InputError& e) {
        if (std::strstr(e.what(), "scenario.json") == nullptr && std::strstr(e.what(), "series.csv") == nullptr) {
            std::fprintf(stderr, "an input error that names no file: %s\n", e.what());
            std::abort();
        }
    }
    return 0;
}
