#include "platform/qt/rich_text_box.h"

#include "platform/file_error.h"
#include "platform/files.h"
#include "platform/qt/fonts.h"
#include "platform/qt/twips.h"
#include "platform/rich_text.h"

#include <QBuffer>
#include <QImage>
#include <QImageReader>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextTable>

#include <algorithm>
#include <optional>
#include <variant>

namespace {

using platform::RichCell;
using platform::RichColour;
using platform::RichFont;
using platform::RichFormat;
using platform::RichLayout;
using platform::RichParagraph;
using platform::RichRow;
using platform::RichRun;
using platform::RichText;

// Pixels.
constexpr int cellPadding = 3;
constexpr int aroundTables = 4;
constexpr int widestPicture = 600;
constexpr qint64 mostPixelsRead = 3'000'000; // of one picture
constexpr qint64 mostPixelsKept = 4'000'000; // of all pictures

qint64 pixelsIn(QSize size) {
    return qint64{size.width()} * size.height();
}

// Not for the colour that is none: that is the page's own.
QColor screenColour(RichColour colour) {
    return QColor::fromRgb(static_cast<QRgb>(*colour));
}

// Builds the document block by block.
class PageWriter {
public:
    // `sharpness`: of the screen, in pixels of its own to a pixel.
    PageWriter(const RichText& text, QTextDocument* document, double sharpness)
        : text_(text), document_(document), cursor_(document), sharpness_(sharpness) {}

    void Write() {
        cursor_.beginEditBlock();
        for (std::size_t i = 0; i < text_.blocks.size();) {
            if (const auto* paragraph = std::get_if<RichParagraph>(&text_.blocks[i])) {
                writeParagraph(*paragraph);
                ++i;
            } else {
                const std::size_t rows = rowsAlike(i);
                writeTable(i, rows);
                i += rows;
            }
        }
        cursor_.endEditBlock();
    }

private:
    const RichRow* row(std::size_t block) const {
        return block < text_.blocks.size() ? std::get_if<RichRow>(&text_.blocks[block]) : nullptr;
    }

    // A table has one number of columns: rows with another one begin a new table.
    std::size_t rowsAlike(std::size_t first) const {
        std::size_t count = 1;
        while (const RichRow* next = row(first + count)) {
            if (next->cells.size() != row(first)->cells.size())
                break;
            ++count;
        }
        return count;
    }

    void writeTable(std::size_t first, std::size_t rows) {
        const RichRow& top = *row(first);
        QTextTableFormat format;
        format.setCellPadding(cellPadding);
        format.setCellSpacing(0);
        format.setTopMargin(aroundTables);
        format.setBottomMargin(aroundTables);
        format.setBorder(top.bordered ? 1 : 0);
        format.setBorderCollapse(true);
        format.setBorderStyle(QTextFrameFormat::BorderStyle_Solid);
        format.setBorderBrush(Qt::gray);
        format.setLeftMargin(pixels(top.left));
        format.setColumnWidthConstraints(columnWidths(top));

        const int columns = static_cast<int>(top.cells.size());
        QTextTable* table = cursor_.insertTable(static_cast<int>(rows), columns, format);
        for (std::size_t r = 0; r < rows; ++r) {
            for (int c = 0; c < columns; ++c) {
                const RichCell& cell = row(first + r)->cells[static_cast<std::size_t>(c)];
                writeCell(table->cellAt(static_cast<int>(r), c), cell);
            }
        }
        cursor_ = table->lastCursorPosition();
        cursor_.movePosition(QTextCursor::NextBlock);
        blockUnused_ = true;
    }

    static QList<QTextLength> columnWidths(const RichRow& row) {
        QList<QTextLength> widths;
        int left = row.left;
        for (const RichCell& cell : row.cells) {
            const int width = pixels(cell.rightEdge - left);
            widths.append(width > 0 ? QTextLength(QTextLength::FixedLength, width) : QTextLength());
            left = cell.rightEdge;
        }
        return widths;
    }

    void writeCell(QTextTableCell place, const RichCell& cell) {
        cursor_ = place.firstCursorPosition();
        blockUnused_ = true;
        for (const RichParagraph& paragraph : cell.paragraphs)
            writeParagraph(paragraph);
        // Last, since the format of a cell is that of its first paragraph's end.
        QTextCharFormat format = place.format();
        format.clearBackground();
        if (cell.background)
            format.setBackground(screenColour(cell.background));
        place.setFormat(format);
    }

    void writeParagraph(const RichParagraph& paragraph) {
        const QTextBlockFormat format = blockFormat(paragraph.layout);
        const QTextCharFormat end = charFormat(paragraph.endFormat);
        if (blockUnused_) {
            cursor_.setBlockFormat(format);
            cursor_.setBlockCharFormat(end);
        } else {
            cursor_.insertBlock(format, end);
        }
        blockUnused_ = false;
        for (const RichRun& run : paragraph.runs) {
            if (run.picture.empty())
                cursor_.insertText(shownText(run.text), charFormat(run.format));
            else
                writePicture(run);
        }
    }

    static QString shownText(const std::string& text) {
        return QString::fromStdString(text).replace(u'\n', QChar(QChar::LineSeparator));
    }

    // A few bytes of a file can stand for a picture of any size: only what is shown is kept, and
    // what is out of all proportion is not looked at.
    void writePicture(const RichRun& run) {
        QByteArray bytes =
            QByteArray::fromRawData(run.picture.data(), static_cast<qsizetype>(run.picture.size()));
        QBuffer file(&bytes);
        QImageReader reader(&file);
        const QSize whole = reader.size();
        if (!whole.isValid() || pixelsIn(whole) > mostPixelsRead)
            return;
        QSize size = whole;
        if (run.pictureWidth > 0 && run.pictureHeight > 0)
            size = QSize(pixels(run.pictureWidth), pixels(run.pictureHeight));
        if (size.width() > widestPicture)
            size.scale(widestPicture, size.height(), Qt::KeepAspectRatio);

        const QSize kept = whole.boundedTo(size * sharpness_).expandedTo({1, 1});
        pixelsLeft_ -= pixelsIn(kept);
        if (pixelsLeft_ < 0)
            return;
        reader.setScaledSize(kept);
        const QImage image = reader.read();
        if (image.isNull())
            return;

        const QString name = QStringLiteral("picture:%1").arg(++pictures_);
        document_->addResource(QTextDocument::ImageResource, QUrl(name), image);
        QTextImageFormat format;
        format.setName(name);
        format.setWidth(std::max(size.width(), 1));
        format.setHeight(std::max(size.height(), 1));
        cursor_.insertImage(format);
    }

    // Tab stops are counted from the page's edge in the file and from the line's beginning here. A
    // hanging first line has a stop where the other lines begin: lists rely on it.
    static QTextBlockFormat blockFormat(const RichLayout& layout) {
        QTextBlockFormat format;
        switch (layout.alignment) {
        case RichLayout::Alignment::Left:
            format.setAlignment(Qt::AlignLeft | Qt::AlignAbsolute);
            break;
        case RichLayout::Alignment::Right:
            format.setAlignment(Qt::AlignRight | Qt::AlignAbsolute);
            break;
        case RichLayout::Alignment::Centre:
            format.setAlignment(Qt::AlignHCenter);
            break;
        case RichLayout::Alignment::Justified:
            format.setAlignment(Qt::AlignJustify);
            break;
        }
        format.setLeftMargin(pixels(layout.left));
        format.setRightMargin(pixels(layout.right));
        format.setTextIndent(pixels(layout.firstLine));
        format.setTopMargin(pixels(std::max(layout.before, 0)));
        format.setBottomMargin(pixels(std::max(layout.after, 0)));

        QList<QTextOption::Tab> stops;
        const int begin = layout.left + layout.firstLine;
        const auto addStop = [&](int twips) {
            if (twips > begin)
                stops.append(QTextOption::Tab(pixels(twips - begin), QTextOption::LeftTab));
        };
        if (layout.firstLine < 0)
            addStop(layout.left);
        for (const int stop : layout.tabStops)
            addStop(stop);
        std::sort(stops.begin(), stops.end(),
                  [](const auto& a, const auto& b) { return a.position < b.position; });
        format.setTabPositions(stops);
        return format;
    }

    QTextCharFormat charFormat(const RichFormat& format) const {
        constexpr int twipsPerHalfPoint = 10;
        QFont font;
        const auto known = text_.fonts.find(format.font);
        if (known != text_.fonts.end())
            font = installedFont(known->second);
        font.setPixelSize(std::max(pixels(format.halfPoints * twipsPerHalfPoint), 1));
        font.setBold(format.bold);
        font.setItalic(format.italic);
        font.setUnderline(format.underline);
        font.setStrikeOut(format.strikeOut);

        QTextCharFormat shown;
        shown.setFont(font);
        if (format.script != 0)
            shown.setVerticalAlignment(format.script > 0 ? QTextCharFormat::AlignSuperScript
                                                         : QTextCharFormat::AlignSubScript);
        if (format.colour)
            shown.setForeground(screenColour(format.colour));
        if (format.background)
            shown.setBackground(screenColour(format.background));
        return shown;
    }

    // A font that is not installed gives way to those of the other windows.
    static QFont installedFont(const RichFont& wanted) {
        const bool fixed = wanted.kind == RichFont::Kind::Fixed;
        QStringList families;
        if (!wanted.symbols && !wanted.name.empty())
            families.append(QString::fromStdString(wanted.name));
        if (wanted.kind == RichFont::Kind::Serif)
            families.append({QStringLiteral("Liberation Serif"), QStringLiteral("DejaVu Serif")});
        families.append((fixed ? fixedFont(points12) : sansFont(points12)).family());
        QFont font;
        font.setFamilies(families);
        font.setStyleHint(fixed ? QFont::Monospace : QFont::AnyStyle);
        return font;
    }

    const RichText& text_;
    QTextDocument* document_;
    QTextCursor cursor_;
    bool blockUnused_ = true; // the block at the cursor was not asked for
    int pictures_ = 0;
    double sharpness_;
    qint64 pixelsLeft_ = mostPixelsKept;
};

} // namespace

RichTextBox::RichTextBox(QWidget* parent) : QTextEdit(parent) {
    setReadOnly(true);
    setUndoRedoEnabled(false);
    QPalette colours = palette();
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        colours.setColor(group, QPalette::Base, Qt::white);
        colours.setColor(group, QPalette::Text, Qt::black);
    }
    setPalette(colours);
}

void RichTextBox::LoadFile(const std::string& path) {
    clear();
    try {
        const std::optional<RichText> text = platform::ReadRichText(platform::ReadWholeFile(path));
        if (!text)
            throw platform::FileError(path + ": is no rich text file");
        PageWriter(*text, document(), devicePixelRatioF()).Write();
    } catch (const platform::FileError& error) {
        setPlainText(QString::fromUtf8(error.what()));
    }
    moveCursor(QTextCursor::Start);
}
