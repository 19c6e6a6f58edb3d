#include "services/PageText.h"

#include "services/MarkupScan.h"
#include "utils/text/Text.h"

#include <algorithm>
#include <array>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Parts that hold no prose of the page itself, in the order in which they are taken out.
constexpr std::array removedElements{"script"_L1, "style"_L1,  "noscript"_L1, "svg"_L1,    "head"_L1,
                                     "nav"_L1,    "footer"_L1, "form"_L1,     "header"_L1, "aside"_L1};

// A shorter one is a fragment of the page, such as a teaser.
constexpr qsizetype leastBody = 2001;

constexpr qsizetype wallSearchLength = 600;
constexpr std::array wallWords{"access to this page has been denied"_L1,
                               "press & hold"_L1,
                               "press and hold"_L1,
                               "verify you are a human"_L1,
                               "are you a robot"_L1,
                               "captcha"_L1,
                               "perimeterx"_L1,
                               "px-captcha"_L1,
                               "enable javascript and cookies"_L1,
                               "checking your browser"_L1,
                               "attention required"_L1,
                               "request blocked"_L1,
                               "bot detection"_L1};

void keepMainBody(QString &html)
{
    for (const auto name : {"main"_L1, "article"_L1}) {
        const auto match = MarkupScan::firstElement(html, name);
        if (!match)
            continue;
        const auto content =
            QStringView(html).sliced(match->contentStart, match->contentEnd - match->contentStart);
        if (Text::hasAtLeast(content, leastBody)) {
            html = content.toString();
            return;
        }
    }
}

} // namespace

QString PageText::decoded(const QByteArray &body)
{
    if (auto text = Text::fromUtf8(body))
        return std::move(*text);
    return QString::fromLatin1(body);
}

QString PageText::title(const QString &html)
{
    const auto match = MarkupScan::firstTitle(html);
    if (!match)
        return {};
    QString title = html.mid(match->contentStart, match->contentEnd - match->contentStart);
    MarkupScan::removeTags(title);
    MarkupScan::decodeEntities(title);
    return Text::trimmed(title);
}

QString PageText::text(QString html)
{
    for (const auto name : removedElements)
        MarkupScan::removeElements(html, name);
    MarkupScan::removeComments(html);
    keepMainBody(html);
    MarkupScan::breakAfterBlocks(html);
    MarkupScan::breakAtLineBreaks(html);
    MarkupScan::removeTags(html);
    MarkupScan::decodeEntities(html);
    MarkupScan::tidyLines(html);
    return Text::trimmed(html);
}

QString PageText::withoutTags(QString text)
{
    MarkupScan::removeTags(text);
    return text;
}

bool PageText::isBotWall(const QString &title, const QString &text)
{
    const QString seen = (title + u' ' + Text::prefix(text, wallSearchLength)).toLower();
    return std::any_of(wallWords.begin(), wallWords.end(),
                       [&](QLatin1StringView words) { return seen.contains(words); });
}

} // namespace morvane
