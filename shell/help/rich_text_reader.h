// Reads rich text (RTF) for display.
//
// Supports what word processors write for a guide: fonts, sizes, colours, bold, italic, underline;
// paragraphs with alignment, indents, spacing and tab stops; lists, whose numbers and bullets are
// text in the file; simple tables; PNG and JPEG pictures; the visible text of links. Everything
// else is skipped, and a damaged file is shown as far as it can be understood.
#pragma once

#include "platform/qt/twips.h"
#include "shell/help/help_page.h"

#include <QHash>
#include <QTextDocument>

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <vector>

class RichTextReader {
public:
    // `document` must be empty. Returns false and leaves it empty if `rtf` does not begin with
    // "{\rtf". The document is cut off so that reading it, laying it out and destroying it take
    // about a second at most; its last line then states that the rest of the file is not shown.
    // `pixelRatio`: screen pixels per device-independent pixel.
    static bool Read(std::string_view rtf, QTextDocument& document, double pixelRatio);

private:
    struct Font {
        QString name = {};
        bool serif = false;
        bool fixed = false;
        bool symbols = false; // a symbol font
    };

    struct Paragraph {
        QTextBlockFormat shown = {};
        QList<int> tabStops = {}; // pixels from the page's left edge
        bool inTable = false;
        bool describesRow = false; // \trowd has been read since the last \pard
    };

    // Where the text of a group goes.
    enum class Destination { Page, Fonts, Colours, Picture, Nowhere };

    // The state that a group inherits from the group around it. When a group ends, the state of the
    // group around it is in effect again.
    struct Group {
        Destination destination = Destination::Page;
        QTextCharFormat text = {};
        Paragraph paragraph = {};
        bool hidden = false;
        int fallbackLength = 1; // number of characters after a \u that replace it in old readers
    };

    struct Picture {
        QByteArray digits = {};   // hexadecimal
        QSize size = {0, 0};      // pixels
        QSize scale = {100, 100}; // percent
    };

    // The property of a text format that contains the key of its font in the font table. The table
    // may lack that key.
    static constexpr int fontProperty = QTextFormat::UserProperty;
    static constexpr qsizetype maxFonts = 1000;

    // The numeric parameter of a control word.
    struct Number {
        int value = 0;
        bool given = false;
        bool On() const { return !given || value != 0; } // for on/off words
        // The value converted to pixels; `twips` is the number of twips in one unit of the value.
        // Clamped to +-32,000 twips.
        int Pixels(int twips = 1) const {
            constexpr int max = 32'000;
            return pixels(std::clamp(value, -max / twips, max / twips) * twips);
        }
    };

    using Handler = void (*)(RichTextReader&, Number);
    using Handlers = std::unordered_map<std::string_view, Handler>;
    static const Handlers& handlers();

    RichTextReader(std::string_view rtf, QTextDocument& document, double pixelRatio)
        : rest_(rtf), page_(document, pixelRatio) {
        plain();
    }
    void next();
    void controlSymbol();
    void controlWord();
    void word(std::string_view name, Number number);
    void openGroup();
    void closeGroup();
    void enter(Destination destination);
    void byte(int value);
    void addUnicode(int number);
    void addUtf16(char16_t unit);
    void endRun();
    void end(HelpPage::Part part);
    void addPicture();
    Font font(const QTextCharFormat& format) const {
        return fonts_.value(format.intProperty(fontProperty));
    }
    Font& fontEntry() { return fonts_[fonts_.size() < maxFonts ? fontKey_ : 0]; }
    QTextCharFormat charFormat(QTextCharFormat format) const;
    QTextBlockFormat blockFormat() const;
    void plain();
    void setColour(int property, int index);
    bool onPage() const { return groups_.back().destination == Destination::Page; }
    Group& group() { return groups_.back(); }
    QTextCharFormat& text() { return group().text; }
    QTextBlockFormat& block() { return group().paragraph.shown; }

    std::string_view rest_;
    HelpPage page_;
    std::vector<Group> groups_{1};
    std::size_t groupsTooDeep_ = 0;
    bool starred_ = false; // after \*: the next word names an optional group
    int fallbackLeft_ = 0;

    QString run_; // text of one format that is not on the page yet
    QTextCharFormat runFormat_;
    int runs_ = 0;     // runs in the paragraph; a tab begins a new run
    int unbroken_ = 0; // characters since the last space or separator

    int defaultFont_ = 0;
    int fontKey_ = 0; // key of the font or font table entry selected last
    QHash<int, Font> fonts_;
    QList<QColor> colours_;
    QColor mixedColour_;
    HelpPage::Cell cell_; // the next cell of the row being described
    Picture picture_;
};
