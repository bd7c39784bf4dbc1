#include "files/binary_file.h"

#include "fuzz/image_file.h"

using namespace modFunc;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static fuzz::ImageFile image;
    static Bytes expected;
    State& s = image.s;
    image.take({data, size});

    bool fits = true;
    expected = s.BufferData;
    for (std::size_t at = static_cast<std::size_t>(s.FileAddress); at < image.contents.size();
         ++at) {
        const std::size_t target = at + static_cast<std::size_t>(s.BufferAddress);
        if (target < expected.size())
            expected[target] = static_cast<std::uint8_t>(image.contents[at]);
        else
            fits = false;
    }
    fuzz::check(image.loads(OpenBinFile) == fits && image.tooLong() != fits,
                "a file is rejected if it reaches past the image, and only then");
    fuzz::check(s.BufferData == expected, "each byte goes to its own address");
    return 0;
}
