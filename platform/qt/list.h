#pragma once

#include "platform/qt/twips.h"

class QListWidget;
class QString;
class QWidget;

// A list box. The program may leave it without a highlighted row; the first key that moves then
// highlights the row that has the focus, so that none is passed over. Once a row is highlighted, no
// click, key, drag or modifier takes the highlight away: it only moves to another row. A
// double click with another button is handled as two single presses.
QListWidget* addList(QWidget* parent, const char* name, const QString& accessibleName,
                     const TwipsRect& rect);
// The highlighted row, from 0; -1 if no row is highlighted. A row that only has the keyboard's
// focus is not highlighted.
int highlightedRow(const QListWidget* list);
