// The fonts of the windows.
#pragma once

#include <QFont>
#include <QSize>
#include <QString>
#include <QStringList>

// Heights of the type sizes used, in device-independent pixels at 96 to the inch. Pixels, since a
// window's geometry does not follow the desktop's type size either.
inline constexpr int points8_25 = 11;
inline constexpr int points9_75 = 13;
inline constexpr int points12 = 16;
inline constexpr int points24 = 32;

// The first family of the list that is installed, or else the desktop's own.
QFont firstInstalled(const QStringList& families, int pixelSize);
// The font of captions, lists and text boxes, condensed where the installed one is wider than the
// windows were laid out for.
QFont sansFont(int pixelSize = points8_25);
QFont fixedFont(int pixelSize, QFont::Weight weight = QFont::Normal);

// `font`, condensed and then made smaller until every line of `text` fits into `space`, down to
// what can just be read.
QFont fittedFont(QFont font, const QString& text, QSize space);
