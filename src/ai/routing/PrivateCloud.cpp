#include "ai/routing/PrivateCloud.h"

#include "utils/text/Text.h"

#include <QUrl>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Host, port and path, so that spelling the same address otherwise doesn't lead around the seal.
QString placeOf(const QString &baseURL)
{
    const QUrl url(Text::trimmed(baseURL));
    if (url.host().isEmpty())
        return {};
    const int standardPort = url.scheme() == "https"_L1 ? 443 : 80;
    QString path = url.path(QUrl::FullyEncoded);
    while (path.endsWith(u'/'))
        path.chop(1);
    return url.host() + u':' + QString::number(url.port(standardPort)) + path;
}

} // namespace

QString PrivateCloud::baseURL() const
{
    return devRelay ? devRelay->address() + u"/v1"_s : endpoint;
}

bool PrivateCloud::isAt(const QString &baseURL) const
{
    const QString place = placeOf(this->baseURL());
    return !place.isEmpty() && placeOf(baseURL) == place;
}

} // namespace morvane
