#include "ai/contract/BaseURL.h"

#include "ai/contract/ProviderError.h"
#include "network/PrivateNetworkAddress.h"
#include "utils/Text.h"

using namespace Qt::StringLiterals;

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
    const QString host = PrivateNetworkAddress::normalisedHost(url.host());
    const bool isNear =
        host == "localhost"_L1 || PrivateNetworkAddress::isPrivateLiteral(host).value_or(false);
    if (!isNear)
        throw ProviderError(ProviderError::InsecureBaseURL{text});
    return url;
}

QUrl BaseURL::chatCompletions(const QString &text)
{
    QUrl url = validated(text);
    const QString path = url.path(QUrl::FullyEncoded);
    if (path.contains("chat/completions"_L1))
        return url;
    const QString separator = path.endsWith(u'/') ? QString() : u"/"_s;
    url.setPath(path + separator + u"chat/completions"_s, QUrl::StrictMode);
    return url;
}
