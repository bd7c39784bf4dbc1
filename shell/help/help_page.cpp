#include "shell/help/help_page.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QImageReader>
#include <QLoggingCategory>

#include <png.h>

#include <algorithm>
#include <utility>

namespace {

// The page has a budget. Its unit is the layout time of one Latin character (less than a
// microsecond). The costs of everything else are expressed in this unit.
constexpr qint64 room = 2'400'000;
constexpr qint64 runCost = 20;
constexpr qint64 tabCost = 40;
constexpr qint64 paragraphCost = 30;
constexpr qint64 cellCost = 100;
constexpr qint64 objectCost = 150; // of a table or picture, without its contents
constexpr qint64 decodedPixelsPerUnit = 64;
constexpr qint64 shownPixelsPerUnit = 8; // these take memory, too
// Limits the height of the page: if it is 8,388,607 pixels or more, Qt never finishes searching for
// the position of a line.
constexpr qint64 heightPerUnit = 3;

constexpr qint64 maxPicturePixels = 4'000'000;
constexpr int maxTableCells = 1000; // each cell of a larger table takes longer to lay out
constexpr QSize maxPictureSize = {600, 2000};

qint64 area(QSize size) {
    return qint64{size.width()} * size.height();
}

// An upper bound on the cost. A line is assumed to be one and a half times as high as its text and
// to contain at least 140 / `height` characters; in a table, each character may get a line of its
// own.
qint64 costOf(const QString& text, qint64 height, bool inTable) {
    const qint64 ownLine = height * 3 / 2 / heightPerUnit;
    const qint64 sharedLine = height * height * 3 / 2 / heightPerUnit / 140;
    qint64 cost = 0;
    for (const QChar c : text) {
        // Greek and Cyrillic letters take longer than Latin ones; other characters, such as
        // combining ones, can take even longer.
        const bool greekOrCyrillic = c >= u'\u0370' && c < u'\u0590';
        cost += c == u'\t' ? tabCost : c < u'\u0250' ? 1 : greekOrCyrillic ? 2 : 10;
        cost += inTable || c == u'\t' || c == QChar::LineSeparator ? ownLine : sharedLine;
    }
    return cost;
}

// With Qt's decoder, the PNG library prints every error in a PNG file to stderr. The library's own
// interface for files in memory returns the error instead.
QImage decodePng(const QByteArray& bytes) {
    png_image file{};
    file.version = PNG_IMAGE_VERSION;
    QImage image;
    if (png_image_begin_read_from_memory(&file, bytes.data(), std::size_t(bytes.size())) &&
        area({int(file.width), int(file.height)}) <= maxPicturePixels) {
        file.format = PNG_FORMAT_RGBA;
        file.flags |= PNG_IMAGE_FLAG_16BIT_sRGB;
        image = QImage(int(file.width), int(file.height), QImage::Format_RGBA8888);
        if (!png_image_finish_read(&file, nullptr, image.bits(), 0, nullptr))
            image = {};
    }
    png_image_free(&file);
    return image;
}

QImage decodeJpeg(const QByteArray& bytes) {
    QLoggingCategory::setFilterRules(QStringLiteral("qt.gui.imageio.jpeg.warning=false"));
    QBuffer file;
    file.setData(bytes);
    QImageReader reader(&file, "jpeg");
    return area(reader.size()) <= maxPicturePixels ? reader.read() : QImage();
}

} // namespace

HelpPage::HelpPage(QTextDocument& document, double pixelRatio)
    : cursor_(&document), pixelRatio_(pixelRatio), room_(room) {
    cursor_.beginEditBlock();
}

void HelpPage::AddText(const QString& text, const QTextCharFormat& format, bool inTable) {
    room_ -= runCost + costOf(text, format.intProperty(QTextFormat::FontPixelSize), inTable);
    if (begin(inTable))
        cursor_.insertText(text, format);
}

// Even a small file can decode to a picture of maxPicturePixels pixels, so only the scaled picture
// is kept.
void HelpPage::AddPicture(const QByteArray& bytes, QSize size, bool inTable) {
    const bool png = bytes.startsWith("\x89PNG");
    if (!png && !bytes.startsWith("\xFF\xD8"))
        return;
    // Charge the maximum cost now and refund the difference after decoding: a picture that cannot
    // be decoded may take as long as the largest one.
    room_ -= objectCost + maxPicturePixels / decodedPixelsPerUnit;
    if (Full())
        return;
    QImage image = png ? decodePng(bytes) : decodeJpeg(bytes);
    if (image.isNull())
        return;
    if (size.isEmpty())
        size = image.size();
    if (size != size.boundedTo(maxPictureSize))
        size = size.scaled(maxPictureSize, Qt::KeepAspectRatio);
    room_ += (maxPicturePixels - area(image.size())) / decodedPixelsPerUnit;
    image = image.scaled((size * pixelRatio_).expandedTo({1, 1}), Qt::IgnoreAspectRatio,
                         Qt::SmoothTransformation);
    image.setDevicePixelRatio(pixelRatio_);
    room_ -= area(image.size()) / shownPixelsPerUnit + size.height() / heightPerUnit;
    if (begin(inTable))
        cursor_.insertImage(image);
}

bool HelpPage::begin(bool inTable) {
    if (begun_ || Full())
        return !Full();
    room_ -= paragraphCost;
    if (!inTable)
        closeTable();
    else if (!rowOpen_)
        openRow();
    if (Full())
        return false;
    if (inTable && !cellOpen_) {
        cursor_ = table_->cellAt(table_->rows() - 1, column_).firstCursorPosition();
        cellOpen_ = blockUnused_ = true;
    }
    if (!std::exchange(blockUnused_, false))
        cursor_.insertBlock();
    return begun_ = true;
}

void HelpPage::End(Part part, const QTextBlockFormat& format, const QTextCharFormat& end,
                   bool inTable) {
    if (begun_ || (part != Part::Row && begin(inTable))) {
        cursor_.setBlockFormat(format);
        cursor_.setBlockCharFormat(end);
        begun_ = false;
        room_ -= (2 * end.intProperty(QTextFormat::FontPixelSize) +
                  qint64(format.topMargin() + format.bottomMargin())) /
                 heightPerUnit;
    }
    if (part != Part::Paragraph && cellOpen_)
        endCell();
    if (part == Part::Row)
        rowOpen_ = cellOpen_ = false;
}

// All rows of a Qt table have the same number of columns, so a row with a different number begins a
// new table.
void HelpPage::openRow() {
    const int columns = std::max(int(row.cells.size()), 1);
    const bool newTable =
        !table_ || table_->columns() != columns || table_->rows() * columns >= maxTableCells;
    room_ -= cellCost * columns + (newTable ? objectCost : 0);
    if (Full())
        return;
    if (newTable)
        openTable(columns);
    else
        table_->appendRows(1);
    rowOpen_ = true;
    column_ = 0;
}

void HelpPage::openTable(int columns) {
    constexpr int cellPadding = 3;
    constexpr int margin = 4;
    QTextTableFormat format;
    format.setCellPadding(cellPadding);
    format.setCellSpacing(0);
    format.setTopMargin(margin);
    format.setBottomMargin(margin);
    format.setBorder(row.bordered ? 1 : 0);
    format.setBorderCollapse(row.bordered);
    format.setBorderStyle(QTextFrameFormat::BorderStyle_Solid);
    format.setBorderBrush(Qt::gray);
    format.setLeftMargin(row.left);
    QList<QTextLength> widths;
    int left = row.left;
    for (const Cell& cell : row.cells) {
        const int width = cell.rightEdge - std::exchange(left, cell.rightEdge);
        widths << (width > 0 ? QTextLength(QTextLength::FixedLength, width) : QTextLength());
    }
    format.setColumnWidthConstraints(widths);
    closeTable();
    table_ = cursor_.insertTable(1, columns, format);
}

// Called after End() has been called for the cell's paragraphs: Qt keeps a cell's format in the
// block character format of its first paragraph, and End() overwrites this format.
void HelpPage::endCell() {
    QTextTableCell cell = table_->cellAt(table_->rows() - 1, column_);
    QTextTableCellFormat format = cell.format().toTableCellFormat();
    format.clearBackground();
    if (row.bordered) { // Qt 6.8 does not draw the table's own borders
        format.setBorder(1);
        format.setBorderStyle(QTextFrameFormat::BorderStyle_Solid);
        format.setBorderBrush(Qt::gray);
    }
    const auto column = static_cast<std::size_t>(column_);
    if (column < row.cells.size() && row.cells[column].background.isValid())
        format.setBackground(row.cells[column].background);
    cell.setFormat(format);
    // Surplus cells of a row are appended to its last cell.
    cellOpen_ = column_ + 1 == table_->columns();
    column_ += cellOpen_ ? 0 : 1;
}

void HelpPage::closeTable() {
    if (!table_)
        return;
    cursor_ = table_->lastCursorPosition();
    cursor_.movePosition(QTextCursor::NextBlock);
    table_ = nullptr;
    rowOpen_ = cellOpen_ = false;
    blockUnused_ = true;
}

void HelpPage::Finish() {
    closeTable();
    if (Full()) {
        if (!blockUnused_)
            cursor_.insertBlock();
        cursor_.setBlockFormat({});
        cursor_.insertText(
            QCoreApplication::translate("frmHelp", "The rest of this file is not shown."), {});
    }
    cursor_.endEditBlock();
}
