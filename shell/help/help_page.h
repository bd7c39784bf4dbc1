// Builds a text document by appending to it.
#pragma once

#include <QColor>
#include <QTextBlockFormat>
#include <QTextCharFormat>
#include <QTextCursor>
#include <QTextTable>

#include <vector>

// Accepts as much as a window can lay out in about a second. Anything added after that is left out,
// and Finish() adds a line that states this.
class HelpPage {
public:
    // Positions are in pixels from the left edge of the page.
    struct Cell {
        int rightEdge = 0;
        QColor background = {}; // invalid: the page's own background
    };
    struct Row {
        int left = 0;
        bool bordered = false;
        std::vector<Cell> cells = {}; // at most 64
    };
    enum class Part { Paragraph, Cell, Row };

    // `document` must be empty. `pixelRatio`: screen pixels per device-independent pixel.
    HelpPage(QTextDocument& document, double pixelRatio);

    // AddText and AddPicture begin a paragraph if no paragraph is open: in a table cell if
    // `inTable` is true, otherwise outside tables.
    void AddText(const QString& text, const QTextCharFormat& format, bool inTable);
    // `bytes` is a PNG or JPEG file. A picture that is damaged or in another format is left out.
    // `size` is in device-independent pixels; if it is empty, the picture's own size is used.
    void AddPicture(const QByteArray& bytes, QSize size, bool inTable);
    // Ends the paragraph. An empty paragraph is kept and has the height of the font of `end`.
    // Part::Cell also ends the cell. Part::Row ends the row and whatever is open in it, but adds no
    // empty paragraph.
    void End(Part part, const QTextBlockFormat& format, const QTextCharFormat& end, bool inTable);
    void Finish();
    bool Full() const { return room_ < 0; }

    Row row; // the layout of every row that begins from now on

private:
    bool begin(bool inTable);
    void openRow();
    void openTable(int columns);
    void endCell();
    void closeTable();

    QTextCursor cursor_;
    double pixelRatio_;
    qint64 room_;             // below 0 once something has been left out
    bool begun_ = false;      // a paragraph has begun but not ended
    bool blockUnused_ = true; // the block at the cursor contains no paragraph

    QTextTable* table_ = nullptr; // null outside of tables
    bool rowOpen_ = false;
    bool cellOpen_ = false;
    int column_ = 0; // column of the open cell, or of the next one
};
