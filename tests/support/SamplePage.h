#pragma once

#include <QColor>
#include <QFont>
#include <QFontMetrics>
#include <QImage>
#include <QPainter>
#include <QString>
#include <QStringList>

#include <algorithm>

namespace morvane {

// Text of which every word is known, and how much of it was read.
namespace SamplePage {

inline const QString sentence = QStringLiteral(
    "The quick brown fox jumps over the lazy dog while seven bright engines carry water across the narrow "
    "valley and nobody knows whether the evening train will arrive before midnight or after the long storm "
    "has passed over the quiet harbour");

inline QFont font(int pixels)
{
    QFont font(QStringLiteral("Noto Sans"));
    font.setPixelSize(pixels);
    return font;
}

// So many words from the top left; what didn't fit isn't among those that are returned.
inline QStringList paint(QPainter &painter, const QRect &place, int pixels, const QColor &ink,
                         const QColor &paper, int count)
{
    const QStringList vocabulary = sentence.split(u' ');
    const QFontMetrics metrics(font(pixels));
    painter.fillRect(place, paper);
    painter.setFont(font(pixels));
    painter.setPen(ink);
    QPoint pen(place.left() + 12, place.top() + 12 + metrics.ascent());
    QStringList painted;
    for (int i = 0; i < count; ++i) {
        const QString word = vocabulary.at((i * 17 + i / 7) % vocabulary.size());
        const int width = metrics.horizontalAdvance(word + u' ');
        if (pen.x() + width > place.right() - 12)
            pen = {place.left() + 12, pen.y() + metrics.lineSpacing()};
        if (pen.y() + metrics.descent() > place.bottom() - 4)
            break;
        painter.drawText(pen, word);
        painted += word;
        pen.rx() += width;
    }
    return painted;
}

// How many of the words come in the text, in any order, each as often as it does there at most.
inline double shareRead(const QStringList &words, const QString &text)
{
    QStringList read = text.simplified().split(u' ');
    const auto isRead = [&read](const QString &word) { return read.removeOne(word); };
    return double(std::ranges::count_if(words, isRead)) / double(words.size());
}

} // namespace SamplePage

} // namespace morvane
