#include "view_models/blocks/ReplyBlocksModel.h"

#include "markdown/LineGrammar.h"
#include "markdown/MarkdownRenderer.h"
#include "view_models/blocks/BlockContent.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int rowsAtOnce = 300; // more than the longest answers hold

// In the order of MarkdownRenderer::Block.
constexpr QLatin1StringView kinds[] = {
    "paragraph"_L1, "heading"_L1, "bulletList"_L1, "numberedList"_L1, "quote"_L1,
    "code"_L1,      "table"_L1,   "stats"_L1,      "facts"_L1,        "comparison"_L1,
    "timeline"_L1,  "chart"_L1,   "market"_L1,     "weather"_L1,      "divider"_L1,
};
static_assert(std::variant_size_v<MarkdownRenderer::Block> == std::size(kinds));

} // namespace

int ReplyBlocksModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_rows;
}

QHash<int, QByteArray> ReplyBlocksModel::roleNames() const
{
    return {{KindRole, "kind"}, {ContentRole, "content"}, {PlainTextRole, "plainText"}};
}

QVariant ReplyBlocksModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const MarkdownRenderer::Block &block = m_blocks[index.row()];
    switch (role) {
    case KindRole:
        return QString(kinds[block.index()]);
    case ContentRole:
        return BlockContent::of(block);
    case PlainTextRole:
        return BlockContent::plainText(block);
    default:
        return {};
    }
}

void ReplyBlocksModel::setText(const QString &text)
{
    if (m_text == text)
        return;
    if (!text.startsWith(m_text))
        m_marks = {};
    m_text = text;
    update();
    Q_EMIT textChanged();
}

void ReplyBlocksModel::setGrowing(bool growing)
{
    if (m_growing == growing)
        return;
    m_growing = growing;
    update();
    Q_EMIT growingChanged();
}

// A row of a table is words until its last "|" has come. Such words would show for a moment below the table,
// so the line waits.
QString ReplyBlocksModel::shownText()
{
    if (!m_growing) {
        m_marks = {};
        return m_text;
    }
    const qsizetype lastLine = m_text.lastIndexOf(u'\n') + 1;
    if (LineGrammar::trimmed(QStringView(m_text).sliced(lastLine)).startsWith(u'|'))
        return m_text.first(lastLine);
    const qsizetype shown = m_marks.shownLength(m_text);
    return m_text.startsWith(m_read) ? m_text.first(std::max(shown, m_read.size())) : m_text.first(shown);
}

// Where rows do without a "|" at their start, the first words below them are one more until their line says
// that they aren't.
QString ReplyBlocksModel::withoutOpenRow(const QString &text) const
{
    const bool isBelowTable =
        !m_blocks.isEmpty() && std::holds_alternative<MarkdownRenderer::Table>(m_blocks.last());
    const qsizetype lastLine = text.lastIndexOf(u'\n') + 1;
    if (!m_growing || !isBelowTable || lastLine < 2)
        return text;
    const qsizetype rowStart = text.lastIndexOf(u'\n', lastLine - 2) + 1;
    const QStringView row = LineGrammar::trimmed(QStringView(text).sliced(rowStart, lastLine - rowStart));
    const bool waits = row.contains(u'|') && !row.startsWith(u'|') && text.startsWith(m_read);
    return waits ? text.first(std::max(lastLine, m_read.size())) : text;
}

void ReplyBlocksModel::update()
{
    const QString text = withoutOpenRow(shownText());
    if (std::exchange(m_isHolding, m_marks.isHolding()) != m_isHolding)
        Q_EMIT holdingChanged();
    if (text == m_read)
        return;
    if (!m_read.isEmpty() && text.startsWith(m_read)) {
        if (!m_streaming) {
            m_streaming.emplace();
            m_streaming->setText(m_read);
        }
        const qsizetype same = m_streaming->setText(text);
        m_read = text;
        show(m_streaming->blocks(), same);
    } else {
        m_streaming.reset();
        m_read = text;
        m_limit = rowsAtOnce;
        show(MarkdownRenderer::blocks(text), 0);
    }
}

void ReplyBlocksModel::showMore()
{
    m_limit += rowsAtOnce;
    show(m_blocks, m_blocks.size());
}

int ReplyBlocksModel::hiddenCount() const
{
    return static_cast<int>(m_blocks.size()) - m_rows;
}

void ReplyBlocksModel::show(MarkdownRenderer::Blocks blocks, qsizetype same)
{
    const int hidden = hiddenCount();
    const int rows = static_cast<int>(std::min<qsizetype>(blocks.size(), m_limit));
    // A row that changes its kind goes, and with it those below.
    int kept = std::min<int>(std::min(rows, m_rows), static_cast<int>(same));
    while (kept < std::min(rows, m_rows) && m_blocks[kept].index() == blocks[kept].index())
        ++kept;
    if (kept < m_rows) {
        beginRemoveRows({}, kept, m_rows - 1);
        m_rows = kept;
        endRemoveRows();
    }
    const MarkdownRenderer::Blocks before = std::exchange(m_blocks, std::move(blocks));
    for (int row = static_cast<int>(same); row < kept; ++row) {
        if (before[row] != m_blocks[row])
            Q_EMIT dataChanged(index(row), index(row), {ContentRole, PlainTextRole});
    }
    if (kept < rows) {
        beginInsertRows({}, kept, rows - 1);
        m_rows = rows;
        endInsertRows();
    }
    if (hidden != hiddenCount())
        Q_EMIT hiddenCountChanged();
}

} // namespace morvane
