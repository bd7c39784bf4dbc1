#pragma once

#include "app/startup.h"
#include "app/state.h"
#include "fuzz/fuzz.h"
#include "platform/file_error.h"

namespace fuzz {

// Reads the input as the start file `name`. False if it was rejected; the message has to name the
// file and fit a message box.
inline bool readsAs(const char* name, void (*read)(), std::string_view contents) {
    static const File file(name);
    modFunc::state().AppPath = file.folder();
    file.hold(contents);
    try {
        read();
        return true;
    } catch (const platform::FileError& error) {
        const std::string text = error.what();
        check(text.starts_with(file.path() + ", line ") && text.size() < file.path().size() + 250,
              "a rejection names file and position, in a few words");
        return false;
    }
}

} // namespace fuzz
