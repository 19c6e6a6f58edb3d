#include "ai/tools/WebAddress.h"

#include "utils/text/Text.h"

#include <QStringList>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype fewestWords = 2;
constexpr qsizetype mostWords = 12;
constexpr qsizetype shortestSerial = 6; // a number of so many digits names a record, not a topic

bool isSerial(QStringView word)
{
    return word.size() >= shortestSerial &&
           std::all_of(word.begin(), word.end(), [](QChar c) { return c.isDigit(); });
}

} // namespace

std::optional<QUrl> WebAddress::parse(const QString &text)
{
    const QString trimmed = Text::trimmed(text);
    const auto isBlank = [](QChar c) { return c.isSpace() || c.category() == QChar::Other_Control; };
    if (trimmed.isEmpty() || std::any_of(trimmed.begin(), trimmed.end(), isBlank))
        return std::nullopt;
    QUrl url(trimmed);
    return url.isValid() ? std::optional(std::move(url)) : std::nullopt;
}

QString WebAddress::normalised(const QUrl &url)
{
    QString text = url.toString(QUrl::FullyEncoded).toLower();
    if (text.endsWith(u'/'))
        text.chop(1);
    return text;
}

QString WebAddress::host(const QUrl &url)
{
    return url.host(QUrl::FullyEncoded).toLower();
}

std::optional<QString> WebAddress::searchQuery(const QUrl &url)
{
    QStringList words;
    const QString path = url.path(QUrl::FullyDecoded);
    for (const QString &segment : path.split(u'/')) {
        if (!segment.contains(u'-') && !segment.contains(u'_'))
            continue;
        for (QString word : QString(segment).replace(u'_', u'-').split(u'-')) {
            word.remove(".html"_L1);
            if (!word.isEmpty() && !isSerial(word))
                words.append(word);
        }
    }
    if (words.size() < fewestWords)
        return std::nullopt;
    // A decoded path may hold line ends, which would let an address write lines of its own into the answer.
    return words.first(std::min(words.size(), mostWords)).join(u' ').simplified();
}

} // namespace morvane
