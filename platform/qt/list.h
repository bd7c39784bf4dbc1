#pragma once

#include "platform/qt/twips.h"

class QListWidget;
class QString;
class QWidget;

// A list box in which nothing need be highlighted. The first key that moves then highlights the row
// that has the focus, so that none is passed over.
QListWidget* addList(QWidget* parent, const char* name, const QString& accessibleName,
                     const TwipsRect& rect);
