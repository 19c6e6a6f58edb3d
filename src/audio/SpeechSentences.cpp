#include "audio/SpeechSentences.h"

#include <QTextBoundaryFinder>

namespace morvane {

namespace {

// Far enough to find the end of a sentence that fits, whatever follows.
constexpr qsizetype window = SpeechSentences::longestPiece + 1;

// The last place to cut at, or 0.
qsizetype lastBoundary(QStringView text, QTextBoundaryFinder::BoundaryType type)
{
    QTextBoundaryFinder finder(type, text.data(), text.size(), nullptr, 0);
    finder.setPosition(text.size());
    return std::max<qsizetype>(0, finder.toPreviousBoundary());
}

qsizetype endOfPiece(QStringView text)
{
    const QStringView ahead = text.first(std::min(text.size(), window));
    QTextBoundaryFinder finder(QTextBoundaryFinder::Sentence, ahead.data(), ahead.size(), nullptr, 0);
    const qsizetype sentence = finder.toNextBoundary();
    const qsizetype line = ahead.indexOf(u'\n') + 1;
    const qsizetype end = line > 0 ? std::min(line, sentence) : sentence;
    if (end < window)
        return end;
    for (const auto type : {QTextBoundaryFinder::Word, QTextBoundaryFinder::Grapheme}) {
        if (const qsizetype cut = lastBoundary(ahead, type); cut > 0)
            return cut;
    }
    return window;
}

} // namespace

QStringView SpeechSentences::next()
{
    while (!m_rest.isEmpty()) {
        const qsizetype end = endOfPiece(m_rest);
        const QStringView piece = m_rest.first(end).trimmed();
        m_rest = m_rest.sliced(end);
        if (!piece.isEmpty())
            return piece;
    }
    return {};
}

} // namespace morvane
