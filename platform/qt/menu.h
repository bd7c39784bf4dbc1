#pragma once

class QMenu;
class QMenuBar;
class QString;

// A menu in which typing a letter that is not an access key moves to the next entry that begins
// with that letter. If only one entry begins with it, that entry is triggered.
QMenu* addMenu(QMenuBar* bar, const QString& caption);
