#pragma once

#include "markdown/LineGrammar.h"

#include <optional>

namespace morvane {

// While a reply streams, its end may be half of something: a "-" before the words of its item, the "**"
// before what will be bold. Drawn at once it would show for a moment as it is and then turn into its meaning,
// so the end waits for one more piece. What waited once is shown, whatever it is by then.
class HeldMarks {
public:
    // How much of the text is shown now. It begins with the text of before.
    [[nodiscard]] qsizetype shownLength(QStringView text);

    [[nodiscard]] bool isHolding() const { return m_held >= 0; }

private:
    void readLines(QStringView text);
    [[nodiscard]] qsizetype markIn(QStringView text) const;

    qsizetype m_lineStart = 0;                 // of the last line
    std::optional<LineGrammar::Fence> m_fence; // of the code that it stands in
    qsizetype m_held = -1;                     // from where on; -1 for nothing
    qsizetype m_shown = -1;                    // marks up to this place have waited
};

} // namespace morvane
