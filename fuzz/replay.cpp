// Runs a target on each file of a folder, without a fuzzer, so that every interesting input remains
// a test.
#include "fuzz/fuzz.h"

#include "tests/support/temporary_folder.h"

#include <cstdio>

int main(int, char** argv) {
    for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
        std::fprintf(stderr, "%s\n", entry.path().c_str()); // identifies a crashing input
        const std::string input = TemporaryFolder::readFile(entry.path());
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
    }
}
