#include "fuzz/Fuzz.h"

#include "services/PageText.h"
#include "utils/text/Text.h"

#include <QHash>
#include <QRegularExpression>

using namespace morvane;

// Reading a page by the patterns as they are written, for comparison with the scanners. The general matcher
// takes quadratic time on broken markup, so texts are short.
namespace LiteralPatterns {

// Kept once compiled.
const QRegularExpression &pattern(const QString &text)
{
    static QHash<QString, QRegularExpression> known;
    auto &expression = known[text];
    if (expression.pattern().isEmpty())
        expression = QRegularExpression(text, QRegularExpression::CaseInsensitiveOption);
    return expression;
}

void replace(QString &text, const char *expression, const char *with)
{
    text.replace(pattern(QString::fromLatin1(expression)), QString::fromLatin1(with));
}

void decodeEntities(QString &text)
{
    static const QStringList table =
        QStringLiteral("&nbsp;| |&lt;|<|&gt;|>|&quot;|\"|&#39;|'|&apos;|'|&mdash;|\u2014|&ndash;|\u2013|"
                       "&hellip;|\u2026|&rsquo;|\u2019|&lsquo;|\u2018|&ldquo;|\u201c|&rdquo;|\u201d|&amp;|&")
            .split(u'|');
    for (qsizetype i = 0; i < table.size(); i += 2)
        text.replace(table[i], table[i + 1], Qt::CaseInsensitive);
}

QString title(const QString &html)
{
    QString found = pattern(QStringLiteral("<title[^>]*>(.*?)</title>")).match(html).captured(1);
    replace(found, "<[^>]+>", "");
    decodeEntities(found);
    return Text::trimmed(found);
}

QString mainBody(const QString &html)
{
    for (const auto *name : {"main", "article"}) {
        const QString content =
            pattern(QStringLiteral("(?is)<%1\\b[^>]*>(.*?)</%1>").arg(QLatin1StringView(name)))
                .match(html)
                .captured(1);
        if (Text::characterCount(content) >= 2001)
            return content;
    }
    return html;
}

QString text(QString html)
{
    for (const auto *name :
         {"script", "style", "noscript", "svg", "head", "nav", "footer", "form", "header", "aside"})
        html.remove(pattern(QStringLiteral("(?is)<%1\\b[^>]*>.*?</%1>").arg(QLatin1StringView(name))));
    html.remove(pattern(QStringLiteral("(?s)<!--.*?-->")));
    html = mainBody(html);
    replace(html, "</(p|div|section|article|li|tr|h[1-6])>", "\n");
    replace(html, "<br\\s*/?>", "\n");
    replace(html, "<[^>]+>", "");
    decodeEntities(html);
    QStringList lines;
    for (QString line : html.split(pattern(QStringLiteral("[\\x{a}-\\x{d}\\x{85}\\x{2028}\\x{2029}]")))) {
        line.replace(pattern(QStringLiteral("[ \\t]+")), QStringLiteral(" "));
        line = Text::trimmedBlanks(QStringView(line)).toString();
        if (!line.isEmpty())
            lines.append(line);
    }
    return Text::trimmed(lines.join(u'\n'));
}

} // namespace LiteralPatterns

// Any bytes as a page: what the scanners read is what the patterns read.
void morvane::fuzz(QByteArrayView input)
{
    const QString html = PageText::decoded(input.toByteArray());
    const QString title = PageText::title(html);
    const QString text = PageText::text(html);
    static_cast<void>(PageText::isBotWall(title, text));
    constexpr qsizetype comparable = 4096; // longer ones may hit the matcher's own limits
    require(html.size() > comparable ||
            (title == LiteralPatterns::title(html) && text == LiteralPatterns::text(html)));
}
