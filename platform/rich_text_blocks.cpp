#include "platform/rich_text_blocks.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace platform {

namespace {

// No guide's table has more columns; laying out a damaged file's thousands would keep the window
// busy for long.
constexpr std::size_t mostCells = 64;

constexpr int mostPieces = 20000;
constexpr std::size_t mostTextBytes = 512 * 1024;

} // namespace

bool RichTextBlocks::full() const {
    return pieces_ >= mostPieces || textBytes_ >= mostTextBytes;
}

void RichTextBlocks::AddText(std::string_view text, const RichFormat& format) {
    if (full())
        return;
    if (runs_.empty() || runs_.back().format != format || !runs_.back().picture.empty()) {
        runs_.push_back({format, {}, {}, 0, 0});
        ++pieces_;
    }
    runs_.back().text += text;
    textBytes_ += text.size();
}

void RichTextBlocks::AddPicture(RichRun picture) {
    if (full())
        return;
    runs_.push_back(std::move(picture));
    ++pieces_;
}

RichParagraph RichTextBlocks::takeParagraph(const RichMark& mark) {
    ++pieces_;
    return {mark.layout, mark.format, std::exchange(runs_, {})};
}

void RichTextBlocks::EndParagraph(const RichMark& mark) {
    if (full())
        return;
    RichParagraph paragraph = takeParagraph(mark);
    if (mark.inTable) {
        cell_.push_back(std::move(paragraph));
        return;
    }
    EndRow(mark); // one that the file left without ending it
    document_.blocks.emplace_back(std::move(paragraph));
}

void RichTextBlocks::EndCell(const RichMark& mark) {
    if (full())
        return;
    cell_.push_back(takeParagraph(mark));
    if (cells_.size() < mostCells) {
        cells_.emplace_back();
        ++pieces_;
    }
    std::vector<RichParagraph>& paragraphs = cells_.back().paragraphs;
    std::move(cell_.begin(), cell_.end(), std::back_inserter(paragraphs));
    cell_.clear();
}

void RichTextBlocks::EndRow(const RichMark& mark) {
    if (full())
        return;
    if (!runs_.empty() || !cell_.empty())
        EndCell(mark);
    if (cells_.empty())
        return;
    RichRow row{row_.left, row_.bordered, std::exchange(cells_, {})};
    for (std::size_t i = 0; i < std::min(row.cells.size(), row_.cells.size()); ++i) {
        row.cells[i].rightEdge = row_.cells[i].rightEdge;
        row.cells[i].background = row_.cells[i].background;
    }
    document_.blocks.emplace_back(std::move(row));
}

void RichTextBlocks::EndAll(const RichMark& mark) {
    pieces_ = 0; // there is room for the ends
    textBytes_ = 0;
    if (!runs_.empty())
        EndParagraph(mark);
    EndRow(mark);
}

void RichTextBlocks::BeginRowDefinition() {
    row_ = {};
    cellBackground_.reset();
}

void RichTextBlocks::DefineCell(int rightEdge) {
    if (row_.cells.size() < mostCells)
        row_.cells.push_back({rightEdge, std::exchange(cellBackground_, {}), {}});
}

} // namespace platform
