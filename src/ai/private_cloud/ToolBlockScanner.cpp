#include "ai/private_cloud/ToolBlockScanner.h"

#include "ai/private_cloud/ToolBlock.h"
#include "utils/text/Text.h"

#include <utility>

namespace morvane {

QString ToolBlockScanner::append(const QString &text)
{
    m_buffer += text;
    if (m_sawMarker)
        return {};
    QString released;
    const qsizetype marker = m_buffer.indexOf(ToolBlock::opening);
    if (marker >= 0) {
        m_sawMarker = true;
        released = m_buffer.first(marker);
        m_buffer.remove(0, marker + ToolBlock::opening.size());
    } else {
        released = Text::droppingLast(m_buffer, ToolBlock::opening.size() - 1);
        m_buffer.remove(0, released.size());
    }
    return released;
}

QString ToolBlockScanner::flush()
{
    return m_sawMarker ? QString() : std::exchange(m_buffer, {});
}

QString ToolBlockScanner::block() const
{
    const qsizetype end = m_buffer.indexOf(ToolBlock::closing);
    return end < 0 ? m_buffer : m_buffer.first(end);
}

} // namespace morvane
