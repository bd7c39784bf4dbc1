// Gives a target each file of a folder, without a fuzzer: every input that was ever of interest
// stays a test.
#include "fuzz/fuzz.h"

int main(int argc, char** argv) {
    fuzz::check(argc == 2, "usage: replay_TARGET FOLDER");
    int inputs = 0;
    for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
        std::printf("%s\n",
                    entry.path().c_str()); // before the call, so that a crash is known by it
        std::fflush(stdout);
        const std::string input = TemporaryFolder::readFile(entry.path());
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
        ++inputs;
    }
    fuzz::check(inputs > 0, "the folder has inputs");
    std::printf("%d inputs\n", inputs);
}
