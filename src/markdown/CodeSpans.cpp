#include "markdown/CodeSpans.h"

namespace morvane {

CodeSpans::CodeSpans(QStringView text)
    : m_text(text)
{
    for (qsizetype at = text.indexOf(u'`'); at >= 0; at = text.indexOf(u'`', at)) {
        const qsizetype end = endOfRun(at);
        m_lastRuns[end - at] = at;
        at = end;
    }
}

qsizetype CodeSpans::endOfRun(qsizetype at) const
{
    while (at < m_text.size() && m_text[at] == u'`')
        ++at;
    return at;
}

qsizetype CodeSpans::endOfSpan(qsizetype at) const
{
    const qsizetype inner = endOfRun(at);
    const qsizetype length = inner - at;
    if (m_lastRuns.value(length, -1) < inner)
        return inner;
    for (qsizetype run = m_text.indexOf(u'`', inner); run >= 0;) {
        const qsizetype end = endOfRun(run);
        if (end - run == length)
            return end;
        run = m_text.indexOf(u'`', end);
    }
    return inner;
}

} // namespace morvane
