#include "ai/contract/BaseURL.h"

#include "ai/contract/ProviderError.h"
#include "network/PrivateNetworkAddress.h"
#include "utils/text/Text.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView endpoint{"chat/completions"};

// The address with `name` as the last part of its path.
QUrl withLastPart(QUrl url, QString path, QLatin1StringView name)
{
    if (!path.endsWith(u'/'))
        path += u'/';
    url.setPath(path + name, QUrl::StrictMode);
    return url;
}

// The host before QUrl reads octal, hexadecimal, short or full-width spellings of an IPv4 address into it.
// Such a text is a name to us, and never a private address. `text` is a valid URL with a host.
QString hostAsWritten(const QString &text)
{
    const qsizetype start = text.indexOf("://"_L1) + 3;
    const auto isPathStart = [](QChar c) { return c == u'/' || c == u'?' || c == u'#'; };
    const auto end = std::find_if(text.begin() + start, text.end(), isPathStart);
    QStringView authority = QStringView(text).sliced(start, end - text.begin() - start);
    authority = authority.sliced(authority.lastIndexOf(u'@') + 1);
    const qsizetype port = authority.lastIndexOf(u':');
    const bool hasPort = port > authority.lastIndexOf(u']');
    return (hasPort ? authority.first(port) : authority).toString();
}

} // namespace

QUrl BaseURL::validated(const QString &text)
{
    const QString trimmed = Text::trimmed(text);
    const QUrl url(trimmed, QUrl::StrictMode);
    if (trimmed.isEmpty() || !url.isValid() || url.scheme().isEmpty() || url.host().isEmpty())
        throw ProviderError(ProviderError::InvalidBaseURL{text});
    const QString scheme = url.scheme().toLower();
    if (scheme == "https"_L1)
        return url;
    if (scheme != "http"_L1)
        throw ProviderError(ProviderError::InvalidBaseURL{text});
    if (!PrivateNetworkAddress::isNear(hostAsWritten(trimmed)))
        throw ProviderError(ProviderError::InsecureBaseURL{text});
    return url;
}

QUrl BaseURL::chatCompletions(const QString &text)
{
    const QUrl url = validated(text);
    const QString path = url.path(QUrl::FullyEncoded);
    return path.contains(endpoint) ? url : withLastPart(url, path, endpoint);
}

QUrl BaseURL::models(const QString &text)
{
    const QUrl url = validated(text);
    const QString path = url.path(QUrl::FullyEncoded);
    const qsizetype end = path.indexOf(endpoint);
    return withLastPart(url, end < 0 ? path : path.first(end), "models"_L1);
}

QString BaseURL::origin(const QString &text)
{
    try {
        const QUrl url = validated(text);
        const int standardPort = url.scheme() == "https"_L1 ? 443 : 80;
        QUrl origin;
        origin.setScheme(url.scheme());
        origin.setHost(url.host());
        if (url.port(standardPort) != standardPort)
            origin.setPort(url.port());
        return origin.toString(QUrl::FullyEncoded);
    } catch (const ProviderError &) {
        return {};
    }
}

QUrl BaseURL::withPath(const QString &text, QLatin1StringView path)
{
    QUrl url = validated(text);
    url.setPath(u'/' + path, QUrl::StrictMode);
    url.setQuery(QString());
    url.setFragment(QString());
    return url;
}

bool BaseURL::mayRedirect(const QUrl &from, const QUrl &to)
{
    const bool isFromNear = PrivateNetworkAddress::isNear(from.host());
    if (isFromNear && !PrivateNetworkAddress::isNear(to.host()))
        return false;
    const bool isUnsealed = from.scheme() == "https"_L1 && to.scheme() != "https"_L1;
    if (isUnsealed && !isFromNear)
        return false;
    try {
        return validated(to.toString(QUrl::FullyEncoded)).isValid();
    } catch (const ProviderError &) {
        return false;
    }
}

} // namespace morvane
