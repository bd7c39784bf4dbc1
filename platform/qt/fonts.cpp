#include "platform/qt/fonts.h"

#include <QFontDatabase>
#include <QFontMetrics>

QFont firstInstalled(const QStringList& families, int pixelSize) {
    static const QStringList installed = QFontDatabase::families();
    QFont font;
    for (const QString& family : families) {
        if (installed.contains(family)) {
            font.setFamily(family);
            break;
        }
    }
    font.setPixelSize(pixelSize);
    return font;
}

QFont sansFont(int pixelSize) {
    QFont font =
        firstInstalled({QStringLiteral("MS Sans Serif"), QStringLiteral("Microsoft Sans Serif"),
                        QStringLiteral("Arial"), QStringLiteral("Liberation Sans"),
                        QStringLiteral("Nimbus Sans"), QStringLiteral("DejaVu Sans Condensed"),
                        QStringLiteral("Noto Sans"), QStringLiteral("DejaVu Sans")},
                       pixelSize);
    // The font is condensed until this caption, the tightest of all, fits its label. captionWidth
    // is the width of that label at the smallest type size, less a gap before the text box.
    constexpr int captionWidth = 100;
    const QString caption = QStringLiteral("Buffer Address (HEX):");
    const int width = captionWidth * pixelSize / points8_25;
    font.setStretch(fittedFont(font, caption, QSize(width, 2 * pixelSize)).stretch());
    return font;
}

QFont fixedFont(int pixelSize, QFont::Weight weight) {
    QFont font =
        firstInstalled({QStringLiteral("Courier"), QStringLiteral("Courier New"),
                        QStringLiteral("Liberation Mono"), QStringLiteral("DejaVu Sans Mono"),
                        QFontDatabase::systemFont(QFontDatabase::FixedFont).family()},
                       pixelSize);
    font.setStyleHint(QFont::Monospace);
    font.setFixedPitch(true);
    font.setWeight(weight);
    return font;
}

QFont fittedFont(QFont font, const QString& text, QSize space) {
    constexpr int minStretch = 70; // percent; below this, a smaller font is easier to read
    constexpr int minPixelSize = 8;
    const auto fits = [&] {
        const QFontMetrics metrics(font);
        return metrics.size(0, text).width() <= space.width() &&
               metrics.tightBoundingRect(text).height() <= space.height();
    };
    int stretch = font.stretch() == QFont::AnyStretch ? int(QFont::Unstretched) : font.stretch();
    while (!fits() && stretch > minStretch)
        font.setStretch(stretch -= 5);
    while (!fits() && font.pixelSize() > minPixelSize)
        font.setPixelSize(font.pixelSize() - 1);
    return font;
}
