#include "platform/rich_text.h"

#include "fuzz/fuzz.h"

#include <algorithm>
#include <clocale>
#include <variant>

using namespace platform;
using fuzz::check;

namespace {

bool isShownText(const std::string& text) {
    static const char* const locale = std::setlocale(LC_CTYPE, "C.UTF-8");
    return locale && std::mbstowcs(nullptr, text.c_str(), 0) != static_cast<std::size_t>(-1) &&
           std::ranges::none_of(text, [](char c) {
               return (static_cast<unsigned char>(c) < ' ' && c != '\t' && c != '\n') || c == 0x7F;
           });
}

void checkParagraph(const RichParagraph& paragraph) {
    const RichLayout& layout = paragraph.layout;
    std::vector<int> twips = layout.tabStops;
    check(twips.size() <= 32, "tab stops are not too many");
    twips.insert(twips.end(),
                 {layout.left, layout.right, layout.firstLine, layout.before, layout.after});
    for (const RichRun& run : paragraph.runs) {
        check(run.format.halfPoints >= 2 && run.format.halfPoints <= 400,
              "a font's size is within its bounds");
        check(run.text.empty() != run.picture.empty(), "a run is text or a picture");
        check(isShownText(run.text), "text is UTF-8 without control characters");
        twips.insert(twips.end(), {run.pictureWidth, run.pictureHeight});
    }
    check(std::ranges::all_of(twips, [](int length) { return std::abs(length) <= 32000; }),
          "a length is within its bounds");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view file = fuzz::Input(data, size).rest();
    const std::optional<RichText> text = ReadRichText(file);
    check(text.has_value() == file.starts_with("{\\rtf"), "rich text is told by its beginning");
    if (!text)
        return 0;
    for (const auto& [key, font] : text->fonts)
        check(isShownText(font.name), "a font's name is UTF-8 without control characters");
    for (const auto& block : text->blocks) {
        if (const auto* paragraph = std::get_if<RichParagraph>(&block)) {
            checkParagraph(*paragraph);
            continue;
        }
        const auto& cells = std::get<RichRow>(block).cells;
        check(!cells.empty() && cells.size() <= 64, "a row has a cell and not too many");
        for (const RichCell& cell : cells) {
            check(!cell.paragraphs.empty(), "a cell has a paragraph");
            std::ranges::for_each(cell.paragraphs, checkParagraph);
        }
    }
    return 0;
}
