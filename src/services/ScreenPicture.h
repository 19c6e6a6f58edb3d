#pragma once

#include "utils/bytes/SecretBytes.h"

#include <QRectF>
#include <QSize>

namespace morvane {

// What the screen showed at one moment. It lives in memory only, and is wiped as it leaves.
struct ScreenPicture {
    enum class Form {
        pixels, // four bytes each: blue, green, red, unused; top row first, none padded
        file,   // a picture in a format of its own, which nothing here decodes
    };
    Form form = Form::pixels;
    SecretBytes bytes;
    QSize size;                // of the pixels; of a file it isn't known
    QRectF part{0, 0, 1, 1};   // what of it is the main display, in fractions from its upper left corner
    double pixelsPerPoint = 1; // how many of its pixels make up one that programs draw in
};

} // namespace morvane
