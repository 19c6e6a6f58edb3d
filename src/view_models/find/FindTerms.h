#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

namespace morvane {

// What is looked for in a chat. Letter case, accents and the kinds of blanks don't count. A value; any
// thread.
class FindTerms {
    Q_GADGET
    QML_VALUE_TYPE(findTerms)

public:
    enum class Way {
        phrase, // the words as they stand
        words,  // each word by itself, as the search over all chats takes them
    };

    struct Find {
        qsizetype start = 0; // in UTF-16 units
        qsizetype length = 0;
        bool operator==(const Find &) const = default;
    };

    FindTerms() = default;
    // Blanks at both ends don't count.
    explicit FindTerms(const QString &query, Way way = Way::phrase);

    [[nodiscard]] bool isEmpty() const { return m_needles.isEmpty(); }
    // In order and apart from each other.
    [[nodiscard]] QList<Find> in(QStringView text) const;

    bool operator==(const FindTerms &) const = default;

private:
    QStringList m_needles; // folded
};

} // namespace morvane
