#include "view_models/find/ShownText.h"

#include "view_models/blocks/BlockContent.h"
#include "view_models/blocks/Prose.h"

#include <QRegularExpression>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace MarkdownRenderer;

namespace {

QStringList textsOf(const QList<AttributedText> &parts)
{
    QStringList texts;
    for (const AttributedText &part : parts)
        texts.append(part.text);
    return texts;
}

QStringList cellsOf(const TableWords &table)
{
    const qsizetype columns = std::min(table.headers.size(), TableWords::mostColumns);
    QStringList texts = textsOf(table.headers.first(columns));
    for (const auto &row : table.rows.first(std::min(table.rows.size(), TableWords::mostRows)))
        texts += textsOf(row.first(columns));
    return texts;
}

// What each entry of a card shows, in its order.
struct EntryParts {
    QStringList operator()(const Stats &) const { return {u"value"_s, u"label"_s, u"change"_s}; }
    QStringList operator()(const Facts &) const { return {u"label"_s, u"value"_s}; }
    QStringList operator()(const WeatherInfo &) const { return {u"label"_s, u"value"_s}; }
    QStringList operator()(const Timeline &) const { return {u"marker"_s, u"text"_s}; }
    QStringList operator()(const Market &) const { return {u"name"_s, u"value"_s, u"change"_s}; }
    template <typename Other>
    QStringList operator()(const Other &) const
    {
        return {};
    }
};

} // namespace

QStringList ShownText::of(const Block &block)
{
    const QVariantMap content = BlockContent::of(block);
    QStringList texts = textsOf(content.value(u"words"_s).value<Prose>().parts);
    texts += cellsOf(content.value(u"table"_s).value<TableWords>());
    if (content.contains(u"code"_s))
        texts += of(content.value(u"code"_s).toString());
    for (const auto &part : {u"title"_s, u"condition"_s, u"location"_s, u"high"_s})
        texts += content.value(part).toString();
    const QString low = content.value(u"low"_s).toString();
    texts += low.isEmpty() ? low : u"Low "_s + low;
    texts += content.value(u"labels"_s).toStringList(); // of a chart
    const QStringList parts = std::visit(EntryParts{}, block);
    const auto entries = content.value(u"entries"_s).toList();
    for (const QVariant &entry : entries) {
        for (const QString &part : parts)
            texts += entry.toMap().value(part).toString();
    }
    texts.removeAll(QString());
    return texts;
}

QStringList ShownText::of(const QString &message)
{
    static const QRegularExpression lineEnd(u"[\n\r\u2029]"_s);
    return message.split(lineEnd, Qt::SkipEmptyParts);
}

} // namespace morvane
