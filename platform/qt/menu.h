#pragma once

class QMenu;
class QMenuBar;
class QString;

// A menu in which a letter that is not an access key moves to the next entry that begins with it,
// and triggers that entry if it is the only one.
QMenu* addMenu(QMenuBar* bar, const QString& caption);
