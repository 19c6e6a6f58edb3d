#pragma once

#include <QList>
#include <QString>
#include <QTextCharFormat>

class QTextDocument;

namespace morvane {

// Lets a long paragraph grow without laying all of it out again: the lines that nothing will move any more
// stand as a paragraph of their own, apart from the last ones. The blank that ended such a line is what parts
// them, so that every place in the text stays what it is and every line stays where it was.
class SettledLines {
public:
    // Puts the parted places into a text that is about to stand in the document.
    void mark(QString &text) const;

    // Forgets those that don't stand firm where the text is written anew from a place on, also in the text.
    // The place from which it must be written then.
    [[nodiscard]] qsizetype keepBefore(qsizetype from, QString &text);

    // Parts the last paragraph where it has grown long. `shown` is the document's text.
    void settle(QTextDocument &document, QString &shown);

    // One paragraph again, as it was written.
    void join(QTextDocument &document, QString &shown);

    void clear() { m_places.clear(); }

private:
    struct Place {
        qsizetype at;
        QChar blank;
        QTextCharFormat format;
    };
    QList<Place> m_places;
};

} // namespace morvane
