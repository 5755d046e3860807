#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <string_view>

#include "fuzz/FuzzTarget.h"

// What libFuzzer calls, and what it offers.
extern "C" {
int LLVMFuzzerInitialize(int* argc, char*** argv);
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                    unsigned seed);
std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);
}

namespace cqsurvey {

void RequirePromise(bool kept, const char* promise) {
    if (!kept) {
        std::fprintf(stderr, "broken promise: %s\n", promise);
        std::abort();
    }
}

namespace {

/// A word as libFuzzer reads it from a dictionary.
std::string Quoted(const std::string& word) {
    std::string quoted = "\"";
    for (const char byte : word) {
        char code[5] = {};
        std::snprintf(code, sizeof(code), "\\x%02X", static_cast<unsigned char>(byte));
        quoted += code;
    }
    return quoted + "\"";
}

void WriteSeeds(const std::string& folder, const std::string& dictionary) {
    int number = 0;
    for (const std::string& seed : GetFuzzTarget().MakeSeeds()) {
        std::ofstream(folder + "/seed" + std::to_string(++number), std::ios::binary) << seed;
    }
    std::ofstream words(dictionary, std::ios::binary);
    for (const std::string& word : GetFuzzTarget().GetWords()) {
        words << Quoted(word) << '\n';
    }
}

}  // namespace
}  // namespace cqsurvey

/// "--seeds FOLDER DICTIONARY" writes the seeds and the words instead of fuzzing.
int LLVMFuzzerInitialize(int* argc, char*** argv) {
    if (*argc == 4 && std::string_view((*argv)[1]) == "--seeds") {
        cqsurvey::WriteSeeds((*argv)[2], (*argv)[3]);
        std::exit(0);
    }
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    cqsurvey::GetFuzzTarget().Run({reinterpret_cast<const char*>(data), size});
    return 0;
}

std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                    unsigned seed) {
    // One in four changes is one of bytes even where the format has ways of its own.
    if (seed % 4 != 0) {
        const std::string bytes(reinterpret_cast<const char*>(data), size);
        const auto changed = cqsurvey::GetFuzzTarget().Mutate(bytes, seed / 4);
        if (changed && !changed->empty() && changed->size() <= maxSize) {
            std::memcpy(data, changed->data(), changed->size());
            return changed->size();
        }
    }
    return LLVMFuzzerMutate(data, size, maxSize);
}
