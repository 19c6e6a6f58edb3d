#include "attestation/VeniceEndpoint.h"

#include "utils/text/Text.h"

namespace morvane {

using namespace Qt::StringLiterals;

std::optional<QUrl> VeniceEndpoint::url(const QString &baseURLString, const QString &name)
{
    QUrl url(Text::trimmed(baseURLString), QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty())
        return std::nullopt;
    url.setQuery(QString());
    url.setFragment(QString());
    const QString path = url.path(QUrl::FullyEncoded);
    url.setPath(path + (path.endsWith(u'/') ? u""_s : u"/"_s) + name, QUrl::StrictMode);
    return url;
}

} // namespace morvane
