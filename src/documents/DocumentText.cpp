#include "documents/DocumentText.h"

#include "utils/text/Text.h"

#include <QStringDecoder>

#include <algorithm>
#include <optional>

namespace morvane {

namespace {

std::optional<QString> decodedAs(QStringConverter::Encoding encoding, QByteArrayView bytes)
{
    QStringDecoder decoder(encoding, QStringDecoder::Flag::Stateless);
    QString text = decoder(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

QString withLineFeeds(QString text)
{
    if (text.contains(u'\r')) {
        text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
        text.replace(u'\r', u'\n');
    }
    return text;
}

// Where `mark` stands last, wholly behind `from`; -1 for nowhere.
qsizetype lastOf(QStringView mark, QStringView text, qsizetype from)
{
    const qsizetype at = text.lastIndexOf(mark);
    return at < from ? -1 : at;
}

} // namespace

QString DocumentText::decoded(QByteArrayView bytes)
{
    const auto marked = QStringConverter::encodingForData(bytes);
    std::optional<QString> text = decodedAs(marked.value_or(QStringConverter::Utf8), bytes);
    if (!text)
        text = QString::fromLatin1(bytes);
    return withLineFeeds(*std::move(text));
}

DocumentText::Cut DocumentText::cut(const QString &text, qsizetype limit)
{
    limit = std::max<qsizetype>(limit, 0);
    const QString trimmed = Text::trimmed(text);
    if (!Text::hasAtLeast(trimmed, limit + 1))
        return {trimmed, false};
    const QString head = Text::prefix(trimmed, limit);
    const qsizetype lastFifth = Text::prefix(head, limit * 4 / 5).size();
    if (const qsizetype paragraph = lastOf(u"\n\n", head, lastFifth); paragraph >= 0)
        return {head.first(paragraph), true};
    if (const qsizetype sentence = lastOf(u". ", head, lastFifth); sentence >= 0)
        return {head.first(sentence + 2), true};
    return {head, true};
}

} // namespace morvane
