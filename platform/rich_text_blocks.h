// Puts runs, paragraphs and cells together to the blocks of a document.
#pragma once

#include "platform/rich_text.h"

#include <string_view>
#include <vector>

namespace platform {

// What the ends of paragraphs, cells and rows need to know of the group they stand in.
struct RichMark {
    RichFormat format;
    RichLayout layout;
    bool inTable = false;
};

// Takes no more once the document has the size that RichText tells.
class RichTextBlocks {
public:
    explicit RichTextBlocks(RichText& document) : document_(document) {}

    void AddText(std::string_view text, const RichFormat& format);
    void AddPicture(RichRun picture);
    void EndParagraph(const RichMark& mark);
    void EndCell(const RichMark& mark);
    // Ends a cell that was not ended, and leaves out a row without any.
    void EndRow(const RichMark& mark);
    // At the end of the file: what is left becomes a paragraph or row.
    void EndAll(const RichMark& mark);

    // The row that is being described: what it says holds for each row ended until the next one is
    // described.
    void BeginRowDefinition();
    void SetRowLeft(int twips) { row_.left = twips; }
    void SetRowBordered() { row_.bordered = true; }
    void SetCellBackground(RichColour colour) { cellBackground_ = colour; }
    void DefineCell(int rightEdge);

private:
    bool full() const;
    RichParagraph takeParagraph(const RichMark& mark);

    RichText& document_;
    int pieces_ = 0; // runs, paragraphs and cells
    std::size_t textBytes_ = 0;
    std::vector<RichRun> runs_;       // of the paragraph that has not ended
    std::vector<RichParagraph> cell_; // of the cell that has not ended
    std::vector<RichCell> cells_;     // of the row that has not ended
    RichRow row_;                     // the description; its cells hold no text
    RichColour cellBackground_;
};

} // namespace platform
