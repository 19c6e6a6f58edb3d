#include "ai/providers/ServerWords.h"

#include "utils/text/Json.h"
#include "utils/text/Text.h"
#include "utils/text/UntrustedContent.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <array>
#include <span>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longest = 300;
constexpr qsizetype longestRead = 4096; // UTF-16 units, before it is made plain
constexpr int deepest = 4;

QString plain(const QString &words)
{
    const QString line = UntrustedContent::line(words.first(std::min(words.size(), longestRead)));
    return Text::hasAtLeast(line, longest + 1) ? Text::prefix(line, longest) + u'…' : line;
}

QString wordsIn(const QJsonValue &value, int depth);

// A schema's complaint: what is wrong, and the field that it is about.
QString complaint(const QJsonObject &entry)
{
    const QString words = entry["msg"_L1].toString();
    const QString field = entry["loc"_L1].toArray().last().toString();
    return field.isEmpty() || words.isEmpty() ? words : field + u": "_s + words;
}

// What a service that passes requests on was told by the one behind it, which its own words leave out.
QString passedOn(const QJsonObject &object)
{
    const QString raw = object["metadata"_L1]["raw"_L1].toString();
    const QString words = ServerWords::of(raw.toUtf8());
    return words.isEmpty() ? raw : words;
}

QString wordsIn(const QJsonObject &object, int depth)
{
    if (const QString words = passedOn(object); !words.isEmpty())
        return words;
    for (const auto key : {"error"_L1, "message"_L1, "detail"_L1}) {
        if (const QString words = wordsIn(object[key], depth); !words.isEmpty())
            return words;
    }
    return complaint(object);
}

QString wordsIn(const QJsonValue &value, int depth)
{
    if (depth >= deepest)
        return {};
    if (value.isObject())
        return wordsIn(value.toObject(), depth + 1);
    if (value.isArray() && !value.toArray().isEmpty())
        return wordsIn(value.toArray().first(), depth + 1);
    return value.toString();
}

bool nameOne(QStringView words, std::span<const QLatin1StringView> phrases)
{
    return std::any_of(phrases.begin(), phrases.end(),
                       [&](QLatin1StringView phrase) { return words.contains(phrase, Qt::CaseInsensitive); });
}

// As llama.cpp, vLLM, Ollama, LM Studio and the large services put it.
bool tellOfFullContext(QStringView words)
{
    static constexpr std::array phrases{"context length"_L1,          "context size"_L1,
                                        "context window"_L1,          "context limit"_L1,
                                        "context overflow"_L1,        "maximum context"_L1,
                                        "prompt is too long"_L1,      "prompt too long"_L1,
                                        "context shift"_L1,           "too many tokens"_L1,
                                        "context_length"_L1,          "max_seq_len"_L1,
                                        "tokens exceed"_L1,           "maximum number of tokens"_L1,
                                        "maximum prompt length"_L1,   "maximum model length"_L1,
                                        "max_new_tokens"_L1,          "reduce the length of"_L1,
                                        "reduce your message size"_L1};
    return nameOne(words, phrases);
}

// What stands in the place of JSON: a text, but for a page of markup, a piece of JSON or bytes of no meaning.
QString plainText(QByteArrayView body)
{
    const QByteArrayView text = body.trimmed();
    static constexpr QByteArrayView openers{"<{["};
    const bool isText = !text.isEmpty() && !openers.contains(text.front()) && text.isValidUtf8();
    return isText ? QString::fromUtf8(text) : QString();
}

} // namespace

QString ServerWords::of(const QJsonObject &answer)
{
    return plain(wordsIn(answer, 0));
}

QString ServerWords::of(QByteArrayView body)
{
    QJsonParseError problem;
    const auto document = QJsonDocument::fromJson(body.toByteArray(), &problem);
    if (problem.error != QJsonParseError::NoError)
        return plain(plainText(body));
    return of(document.isArray() ? document.array().first().toObject() : document.object());
}

ProviderError ServerWords::error(int status, const QString &words)
{
    const bool isAboutTheRequest =
        status == 0 || status == 400 || status == 413 || status == 422 || status >= 500;
    if (isAboutTheRequest && tellOfFullContext(words))
        return ProviderError(ProviderError::Plain::contextTooLong).quoting(words);
    if (status == 0)
        return ProviderError(ProviderError::ReplyBroken::serverError).quoting(words);
    return ProviderError::forStatus(status).quoting(words);
}

} // namespace morvane
