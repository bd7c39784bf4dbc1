// The fonts of the windows.
#pragma once

#include <QFont>
#include <QSize>
#include <QString>
#include <QStringList>

// Type sizes in device-independent pixels, 96 to the inch. Each name states the size in points at
// 96 pixels to the inch. Fonts are not set in points, because Qt scales points with the desktop's
// font setting. Window geometry ignores that setting, so font sizes must ignore it too.
inline constexpr int points8_25 = 11;
inline constexpr int points9_75 = 13;
inline constexpr int points12 = 16;
inline constexpr int points24 = 32;

// A font of the first family in `families` that is installed or, if none is, of the desktop's
// default family.
QFont firstInstalled(const QStringList& families, int pixelSize);
// The font for captions, lists and text boxes, condensed if the installed font is wider than the
// window layout allows for.
QFont sansFont(int pixelSize = points8_25);
QFont fixedFont(int pixelSize, QFont::Weight weight = QFont::Normal);

// `font`, condensed and then, if necessary, made smaller until `text` fits into `space`, but not
// below a readable size.
QFont fittedFont(QFont font, const QString& text, QSize space);
