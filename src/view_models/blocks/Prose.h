#pragma once

#include "markdown/AttributedText.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace morvane {

// Formatted words on their way to the view: a text, or the items of a list, nested ones among them.
struct Prose {
    Q_GADGET
    QML_VALUE_TYPE(prose)
    Q_PROPERTY(QString plainText READ plainText)
    Q_PROPERTY(bool hasLinks READ hasLinks)

public:
    struct Mark {
        int depth = 0; // of the item it stands before
        QString sign;  // "3.", "•", "☑"
        bool operator==(const Mark &) const = default;
    };

    QList<AttributedText> parts;
    QList<Mark> marks; // one for each item of a list; none for a text

    [[nodiscard]] QString plainText() const;
    [[nodiscard]] bool hasLinks() const;

    bool operator==(const Prose &) const = default;
};

// The cells of a table on their way to the view, each row as wide as the headers.
struct TableWords {
    Q_GADGET
    QML_VALUE_TYPE(tableWords)
    Q_PROPERTY(QString markdown READ markdown)

public:
    // More than these aren't drawn.
    static constexpr qsizetype mostRows = 200;
    static constexpr qsizetype mostColumns = 30;

    QList<AttributedText> headers;
    QList<QList<AttributedText>> rows;

    // The whole of it, to be pasted where Markdown is read.
    [[nodiscard]] QString markdown() const;

    bool operator==(const TableWords &) const = default;
};

} // namespace morvane
