#pragma once

#include "markdown/BlockReader.h"

namespace morvane {

// The blocks of a text that grows at its end. They are always what parsing the whole text would give, but the
// work follows what is new: blocks that have ended are kept, and words that only go on are put behind the
// ones that stand there.
class StreamingMarkdown {
public:
    // Takes the text as it is now. One that does not begin with the text so far is read anew.
    // Blocks before the returned place are the ones of before.
    qsizetype setText(const QString &text);
    qsizetype append(QStringView piece);

    [[nodiscard]] const MarkdownRenderer::Blocks &blocks() const { return m_blocks; }
    [[nodiscard]] const QString &text() const { return m_text; }

private:
    // How the last block may grow without being read again.
    enum class Growth { none, words, code };

    [[nodiscard]] QStringView openLine() const;
    // How much space at its end isn't shown yet.
    [[nodiscard]] qsizetype withheldOf(QStringView text) const;
    [[nodiscard]] bool goesOn(QStringView piece) const;
    void extend(QStringView piece);
    qsizetype readAgain();
    [[nodiscard]] Growth growth() const;

    QString m_text;
    BlockReader m_reader; // has read the ended lines
    qsizetype m_read = 0; // length of those lines
    MarkdownRenderer::Blocks m_blocks;
    qsizetype m_ended = 0; // how many of the blocks can't change any more
    Growth m_growth = Growth::none;
    qsizetype m_withheld = 0; // white space at the end of the text that the last block doesn't show yet
};

} // namespace morvane
