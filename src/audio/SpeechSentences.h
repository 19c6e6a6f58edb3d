#pragma once

#include <QStringView>

namespace morvane {

// Cuts a text into pieces that are spoken one after the other, so that the first is heard while the rest is
// made: sentences, and parts of those that are very long. Goes through the text once.
class SpeechSentences {
public:
    // In UTF-16 units. A voice takes a piece in one breath, and works on it as a whole.
    static constexpr qsizetype longestPiece = 400;

    // `text` outlives this object.
    explicit SpeechSentences(QStringView text)
        : m_rest(text)
    {}

    // Without white space at its ends; empty at the end of the text.
    [[nodiscard]] QStringView next();

private:
    QStringView m_rest;
};

} // namespace morvane
