// A read-only box that shows a rich text file.
#pragma once

#include <QTextEdit>

#include <string>

// The page is white with black text whatever the desktop's colours are: a file's own colours are
// chosen for paper.
class RichTextBox : public QTextEdit {
    Q_OBJECT

public:
    explicit RichTextBox(QWidget* parent);

    // Shows the file from its beginning. A file that is missing, unreadable or no rich text is told
    // in the box itself, with its name and the cause.
    void LoadFile(const std::string& path);
};
