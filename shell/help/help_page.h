// Writes a text document from its beginning to its end.
#pragma once

#include <QColor>
#include <QTextBlockFormat>
#include <QTextCharFormat>
#include <QTextCursor>
#include <QTextTable>

#include <vector>

// Takes what a window can lay out in about a second. What is added after that is left out, and
// Finish adds a line that says so.
class HelpPage {
public:
    // Lengths in pixels from the left edge of the page.
    struct Cell {
        int rightEdge = 0;
        QColor background = {}; // invalid: the page's own
    };
    struct Row {
        int left = 0;
        bool bordered = false;
        std::vector<Cell> cells = {}; // at most 64
    };
    enum class Part { Paragraph, Cell, Row };

    // `document` is empty. `pixelRatio`: pixels of the screen to a device-independent one.
    HelpPage(QTextDocument& document, double pixelRatio);

    // Both begin a paragraph if there is no paragraph yet, in a cell of a table or outside of
    // tables.
    void AddText(const QString& text, const QTextCharFormat& format, bool inTable);
    // `bytes`: a PNG or JPEG file; left out if it is damaged or another kind of file. An empty
    // `size`: the picture's own.
    void AddPicture(const QByteArray& bytes, QSize size, bool inTable);
    // Ends a paragraph, also an empty one, which has the height of `end`; or also the cell that it
    // is in; or what has begun of a row.
    void End(Part part, const QTextBlockFormat& format, const QTextCharFormat& end, bool inTable);
    void Finish();
    bool Full() const { return room_ < 0; }

    Row row; // describes each row that begins

private:
    bool begin(bool inTable);
    void openRow();
    void openTable(int columns);
    void endCell();
    void closeTable();

    QTextCursor cursor_;
    double pixelRatio_;
    qint64 room_;             // below 0 once something was left out
    bool begun_ = false;      // a paragraph has begun and not ended
    bool blockUnused_ = true; // the block at the cursor contains no paragraph

    QTextTable* table_ = nullptr; // null outside of tables
    bool rowOpen_ = false;
    bool cellOpen_ = false;
    int column_ = 0; // of the open cell, or of the next one
};
