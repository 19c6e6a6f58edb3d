#pragma once

#include "view_models/blocks/Prose.h"
#include "views/BlockDocument.h"
#include "views/SettledLines.h"

#include <QVariant>

namespace morvane {

// A text or a list in a TextEdit. When the words change, what they begin with stays as it stands, laid out
// and selected; only what differs is written.
class ProseDocument : public morvane::BlockDocument {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QVariant prose READ prose WRITE setProse NOTIFY proseChanged) // a Prose
    // More words come, and none of those that stand are selected: lines that stay may be kept apart.
    Q_PROPERTY(bool growing READ isGrowing WRITE setGrowing NOTIFY growingChanged)
    // Of the lines, in logical pixels.
    Q_PROPERTY(double width READ width WRITE setWidth NOTIFY widthChanged)

public:
    using BlockDocument::BlockDocument;

    [[nodiscard]] QVariant prose() const { return QVariant::fromValue(m_prose); }
    void setProse(const QVariant &value);
    [[nodiscard]] bool isGrowing() const { return m_growing; }
    void setGrowing(bool growing);
    [[nodiscard]] double width() const { return m_width; }
    void setWidth(double width);
    [[nodiscard]] QString textBetween(int from, int to) const override;

Q_SIGNALS:
    void proseChanged();
    void growingChanged();
    void widthChanged();

protected:
    void showAll() override;

private:
    // Where a paragraph of a list stands.
    struct ParagraphMark {
        int depth = 0;
        bool begins = false; // with the sign of its item
        bool operator==(const ParagraphMark &) const = default;
    };
    // One text, its paragraphs apart by U+2029, or a line feed where a long one is parted, so that places in
    // it are places in the document. The sign of an item is a part of it: a document's own lists all count
    // from 1.
    struct Flat {
        AttributedText text;
        QList<ParagraphMark> marks; // one for each paragraph of a list
    };
    [[nodiscard]] Flat flattened() const;
    void change(Flat whole);
    void joinLines();
    [[nodiscard]] double signWidth() const;
    void write(Flat whole, qsizetype from);
    void mark(const QList<ParagraphMark> &marks, qsizetype from);

    Prose m_prose;
    Flat m_shown;
    SettledLines m_settled;
    bool m_growing = false;
    double m_width = 0;
};

} // namespace morvane
