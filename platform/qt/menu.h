#pragma once

class QMenu;
class QMenuBar;
class QString;

// A menu in which a letter that is no access key goes to the next entry that begins with it, and
// triggers it if it is the only one.
QMenu* addMenu(QMenuBar* bar, const QString& caption);
