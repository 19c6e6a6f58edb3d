#pragma once

#include <QHash>
#include <QStringView>

namespace morvane {

// Where the code in a text ends: at the next run of as many backticks as it began with. Looks are as many as
// the text is long, when it is gone through from left to right.
class CodeSpans {
public:
    // The text must outlive this.
    explicit CodeSpans(QStringView text);

    // The end of what the backtick at `at`, the first of its run, begins; the end of its run when that is
    // never closed.
    [[nodiscard]] qsizetype endOfSpan(qsizetype at) const;

private:
    [[nodiscard]] qsizetype endOfRun(qsizetype at) const;

    QStringView m_text;
    QHash<qsizetype, qsizetype> m_lastRuns; // by their length
};

} // namespace morvane
