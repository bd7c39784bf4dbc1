// Window geometry in twips, 1440 to the inch.
#pragma once

#include <QRect>

inline constexpr int twipsPerPixel = 15; // device-independent pixels

constexpr int pixels(int twips) {
    return qRound(static_cast<double>(twips) / twipsPerPixel);
}

// A rectangle in twips, relative to its window or frame.
struct TwipsRect {
    int left;
    int top;
    int width;
    int height;

    constexpr QRect inPixels() const {
        return {pixels(left), pixels(top), pixels(width), pixels(height)};
    }
};
