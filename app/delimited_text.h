// Delimited text: the format of the settings file, the device list, the Auto file and Intel HEX
// files. In an Intel HEX file, each record is one item.
//
// Items end at a comma or a line end (CR LF, LF or CR); the last line end of a file may be missing.
// A UTF-8 byte order mark at the start of the file is skipped, and so are blanks (spaces and tabs)
// before an item and after a number or a closing double quote. An item that starts with a double
// quote is returned without its quotes, may contain commas and is never a number.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace modFunc {

class DelimitedReader {
public:
    // `fileName` is used in error messages. The reader keeps its own copy of `text`.
    DelimitedReader(std::string fileName, std::string text);
    DelimitedReader(const DelimitedReader&) = delete;
    DelimitedReader& operator=(const DelimitedReader&) = delete;

    // True if no item is left.
    bool atEnd() const { return position_ >= text_.size(); }

    // The next item. The view is valid as long as the reader exists. NextString, NextNumber and
    // NextInt16 throw platform::FileError if the file has ended, a double quote is not closed on
    // its line, or the item is not valid. The message contains the file name, the line number, the
    // item's number counted from the start of the file, `meaning` (such as "device count"), what
    // was expected and what was found.
    std::string_view NextString(std::string_view meaning);
    // A decimal integer from `min` to `max`, inclusive, with an optional sign.
    std::int32_t NextNumber(std::string_view meaning, std::int32_t min, std::int32_t max);
    std::int16_t NextInt16(std::string_view meaning, std::int16_t min = INT16_MIN,
                           std::int16_t max = INT16_MAX);

    // Throws platform::FileError for the item read last. The message shows `item`, truncated if it
    // is long; if `item` contains a zero byte, the message says so instead.
    [[noreturn]] void Reject(std::string_view meaning, const std::string& expected,
                             std::string_view item) const;

private:
    [[noreturn]] void fail(std::string_view meaning, const std::string& expected,
                           const std::string& found) const;
    void skipBlanks();
    void passSeparator();
    std::string_view quotedItem(std::string_view meaning);
    std::string_view nextItem(std::string_view meaning, const std::string& expected);

    std::string fileName_;
    std::string text_;
    std::size_t position_ = 0;
    int line_ = 1;     // line at position_
    int itemLine_ = 1; // line of the item read last
    int item_ = 0;     // number of the item read last, counted from 1
    bool quoted_ = false;
};

// One item on a line of its own, ended by CR LF: a number is written in plain decimal, a string in
// double quotes; the string must not contain a double quote or a line end.
std::string DelimitedLine(std::int32_t number);
std::string DelimitedLine(const std::string& text);

} // namespace modFunc
