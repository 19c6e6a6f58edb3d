#pragma once

#include <QString>
#include <QStringView>

#include <vector>

namespace morvane {

// A text as a search compares it: without letter case and accents, every blank and line end a space. Places
// in it lead back to the text. A value; any thread.
class FoldedText {
public:
    explicit FoldedText(QStringView text);

    [[nodiscard]] const QString &text() const { return m_text; }

    // Where the character begins that stands at this place; the length of the text at the end.
    [[nodiscard]] qsizetype originOf(qsizetype place) const;
    // Where the last character before this place ends, its accents included.
    [[nodiscard]] qsizetype originOfEnd(qsizetype place) const;

private:
    void addCharacter(char32_t character, qsizetype origin);
    void add(const QString &units, qsizetype origin);

    QString m_text;
    qsizetype m_length = 0;           // of the original
    std::vector<qsizetype> m_origins; // of each unit; none where each is its own, as in ASCII
};

} // namespace morvane
