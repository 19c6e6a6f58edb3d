#include "views/CodeColours.h"

#include "highlighting/CodeLanguages.h"

#include <QColor>
#include <QTextDocument>

#include <algorithm>
#include <array>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Formats = std::array<QTextCharFormat, 6>; // of each CodeToken

Formats formatsOf(const QVariantMap &colors)
{
    static const std::array names{u"keyword"_s, u"type"_s, u"name"_s, u"string"_s, u"number"_s, u"comment"_s};
    Formats formats;
    for (std::size_t i = 0; i < names.size(); ++i)
        formats[i].setForeground(colors.value(names[i]).value<QColor>());
    return formats;
}

class Highlighter final : public QSyntaxHighlighter {
public:
    Highlighter(QTextDocument *document, const CodeLanguage &language, const QVariantMap &colors)
        : QSyntaxHighlighter(document)
        , m_language(language)
        , m_formats(formatsOf(colors))
    {
        rehighlight(); // now: by itself it waits until after the next frame
    }

protected:
    void highlightBlock(const QString &line) override
    {
        const int before = previousBlockState();
        const CodeLanguage::Line read = m_language.read(line, before < 0 ? CodeLanguage::start : before);
        for (const CodeSpan &span : read.spans)
            setFormat(static_cast<int>(span.start), static_cast<int>(span.length),
                      m_formats[static_cast<std::size_t>(span.token)]);
        setCurrentBlockState(read.state);
    }

private:
    const CodeLanguage &m_language;
    const Formats m_formats;
};

} // namespace

CodeColours::CodeColours(QObject *parent)
    : QObject(parent)
{}

CodeColours::~CodeColours()
{
    delete m_highlighter;
}

void CodeColours::setDocument(QQuickTextDocument *document)
{
    if (m_document == document)
        return;
    m_document = document;
    colourAnew();
    Q_EMIT documentChanged();
}

void CodeColours::setLanguage(const QString &language)
{
    if (m_language == language)
        return;
    m_language = language;
    colourAnew();
    Q_EMIT languageChanged();
}

void CodeColours::setColors(const QVariantMap &colors)
{
    if (m_colors == colors)
        return;
    m_colors = colors;
    colourAnew();
    Q_EMIT colorsChanged();
}

void CodeColours::colourAnew()
{
    delete m_highlighter; // takes its colours along
    const CodeLanguage *language = CodeLanguages::find(m_language);
    if (m_document && language && !m_colors.isEmpty())
        m_highlighter = new Highlighter(m_document->textDocument(), *language, m_colors);
}

} // namespace morvane
