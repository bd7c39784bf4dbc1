#pragma once

#include "platform/qt/twips.h"

class QListWidget;
class QString;
class QWidget;

// A list box. The program may leave it without a highlighted row; the first Up, Down, Home or End
// key then highlights the row that has the focus, so that no row is skipped. Once a row is
// highlighted, user input can move the highlight to another row but not remove it. A double click
// with a button other than the left one is handled as two single presses.
QListWidget* addList(QWidget* parent, const char* name, const QString& accessibleName,
                     const TwipsRect& rect);
// The highlighted row, counted from 0; -1 if no row is highlighted. A row that only has the
// keyboard focus is not highlighted.
int highlightedRow(const QListWidget* list);
