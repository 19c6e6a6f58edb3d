#pragma once

#include <QString>
#include <QStringList>

namespace morvane {

// The words of a search. Letter case and accents don't count. A value; any thread.
class SearchTerms {
public:
    // The first eight words are kept.
    explicit SearchTerms(const QString &query);

    [[nodiscard]] bool isEmpty() const { return m_words.isEmpty(); }

    // Whether `text` holds every word, in any order. Never when there are none.
    [[nodiscard]] bool match(const QString &text) const;

    // One line of `text` around the first of the words in it, at most 160 UTF-16 units.
    [[nodiscard]] QString excerpt(const QString &text) const;

    bool operator==(const SearchTerms &) const = default;

private:
    QStringList m_words; // folded
};

} // namespace morvane
