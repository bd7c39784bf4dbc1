#pragma once

#include "app/state.h"
#include "buffer/buffer_view.h"
#include "fuzz/fuzz.h"
#include "platform/file_error.h"
#include "tests/support/virtual_machine.h"

namespace fuzz {

// A machine whose file dialog names a file that the input fills: both offsets, then the contents.
class ImageFile : modFunc::BufferView {
public:
    const Bytes untouched = Bytes(modFunc::lastBufferIndex + 1, 0x5A); // the image before a load

    ImageFile() {
        modFunc::useBufferView(this);
        vm.fileName() = file.path();
    }
    void take(Input input) {
        s.FileAddress = input.offset();
        s.BufferAddress = input.offset();
        s.BufferData = untouched;
        contents = input.rest();
        file.hold(contents);
    }
    // Loads the file. False if it was rejected, by a message box or with the cause in `error`.
    bool loads(void (*load)()) {
        vm.messages.clear();
        error.clear();
        shown = false;
        try {
            load();
        } catch (const platform::FileError& rejection) {
            error = rejection.what();
        }
        check(shown == (vm.messages.empty() && error.empty()), "a load is shown or rejected");
        return shown;
    }
    bool tooLong() const { return error.ends_with("the data reach past the end of the image."); }

    modFunc::State& s = modFunc::state();
    VirtualMachine vm;
    File file{"image"};
    std::string_view contents;
    std::string error;

private:
    void Reopen() override { shown = true; }
    bool shown = false;
};

} // namespace fuzz
