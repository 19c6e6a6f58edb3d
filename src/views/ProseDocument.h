#pragma once

#include "view_models/blocks/Prose.h"
#include "views/BlockDocument.h"

#include <QVariant>

namespace morvane {

// A text or a list in a TextEdit. When the words change, what they begin with stays as it stands, laid out
// and selected; only what differs is written.
class ProseDocument : public morvane::BlockDocument {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QVariant prose READ prose WRITE setProse NOTIFY proseChanged) // a Prose

public:
    using BlockDocument::BlockDocument;

    [[nodiscard]] QVariant prose() const { return QVariant::fromValue(m_prose); }
    void setProse(const QVariant &value);

Q_SIGNALS:
    void proseChanged();

protected:
    void showAll() override;

private:
    [[nodiscard]] AttributedText flattened() const;
    void write(AttributedText whole, qsizetype from);

    Prose m_prose;
    AttributedText m_shown; // as one text, its paragraphs apart by U+2029
};

} // namespace morvane
