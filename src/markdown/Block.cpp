#include "markdown/Block.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Each part is led by its length, so that no two contents run together into the same text.
class Identity {
public:
    explicit Identity(QLatin1StringView tag)
        : m_text(tag)
    {}

    Identity &add(const QString &part)
    {
        m_text += QString::number(part.size()) + u':' + part;
        return *this;
    }

    Identity &add(const std::optional<QString> &part)
    {
        if (part)
            return add(*part);
        m_text += u'-';
        return *this;
    }

    Identity &add(const AttributedText &part)
    {
        add(part.text);
        for (const AttributedText::Run &run : part.runs) {
            m_text += u'@' + QString::number(run.start) + u'+' + QString::number(run.length) + u'/' +
                      QString::number(run.formats.toInt());
            add(run.link);
        }
        return *this;
    }

    Identity &add(const MarkdownRenderer::ListItem &item)
    {
        m_text += QString(item.depth, u'>');
        if (item.number)
            m_text += u'#' + QString::number(*item.number);
        if (item.task != MarkdownRenderer::ListItem::Task::none)
            m_text += item.task == MarkdownRenderer::ListItem::Task::done ? u'x' : u'o';
        return add(item.text);
    }

    Identity &add(const MarkdownRenderer::Fact &fact) { return add(fact.label).add(fact.value); }

    template <typename Part>
    Identity &add(const QList<Part> &parts)
    {
        m_text += u'[' + QString::number(parts.size());
        for (const Part &part : parts)
            add(part);
        return *this;
    }

    [[nodiscard]] QString text() const { return m_text; }

private:
    QString m_text;
};

struct IdentityOf {
    QString operator()(const MarkdownRenderer::Paragraph &block) const
    {
        return Identity("p:"_L1).add(block.text).text();
    }
    QString operator()(const MarkdownRenderer::Heading &block) const
    {
        return Identity("h:"_L1).add(QString::number(block.level)).add(block.text).text();
    }
    QString operator()(const MarkdownRenderer::BulletList &block) const
    {
        return Identity("ul:"_L1).add(block.items).text();
    }
    QString operator()(const MarkdownRenderer::NumberedList &block) const
    {
        return Identity("ol:"_L1).add(block.items).text();
    }
    QString operator()(const MarkdownRenderer::Quote &block) const
    {
        return Identity("q:"_L1).add(block.text).text();
    }
    QString operator()(const MarkdownRenderer::Code &block) const
    {
        return Identity("code:"_L1).add(block.language).add(block.text).text();
    }
    QString operator()(const MarkdownRenderer::Table &block) const
    {
        return Identity("t:"_L1).add(block.headers).add(block.rows).text();
    }
    QString operator()(const MarkdownRenderer::Stats &block) const
    {
        Identity identity("st:"_L1);
        for (const MarkdownRenderer::Stat &stat : block.stats)
            identity.add(stat.value).add(stat.label).add(stat.delta);
        return identity.text();
    }
    QString operator()(const MarkdownRenderer::Facts &block) const
    {
        return Identity("f:"_L1).add(block.facts).text();
    }
    QString operator()(const MarkdownRenderer::Comparison &block) const
    {
        return Identity("cmp:"_L1).add(block.heading).add(block.titles).add(block.rows).text();
    }
    QString operator()(const MarkdownRenderer::Timeline &block) const
    {
        Identity identity("tl:"_L1);
        for (const MarkdownRenderer::TimelineEntry &entry : block.entries)
            identity.add(entry.marker).add(entry.text);
        return identity.text();
    }
    QString operator()(const MarkdownRenderer::ChartSpec &block) const
    {
        Identity identity("ch:"_L1);
        identity.add(block.kind == MarkdownRenderer::ChartSpec::Kind::line ? u"line"_s : u"bar"_s)
            .add(block.title)
            .add(block.logScale ? u"log"_s : u"linear"_s);
        for (const MarkdownRenderer::ChartPoint &point : block.points)
            identity.add(point.label).add(point.display);
        return identity.text();
    }
    QString operator()(const MarkdownRenderer::Market &block) const
    {
        Identity identity("mk:"_L1);
        for (const MarkdownRenderer::MarketQuote &quote : block.quotes)
            identity.add(quote.name).add(quote.value).add(quote.change);
        return identity.text();
    }
    QString operator()(const MarkdownRenderer::WeatherInfo &block) const
    {
        return Identity("wx:"_L1)
            .add(block.location)
            .add(block.condition)
            .add(block.high)
            .add(block.low)
            .add(block.details)
            .text();
    }
    QString operator()(const MarkdownRenderer::Divider &) const { return u"hr:"_s; }
};

} // namespace

QString MarkdownRenderer::identity(const Block &block)
{
    return std::visit(IdentityOf{}, block);
}

} // namespace morvane
