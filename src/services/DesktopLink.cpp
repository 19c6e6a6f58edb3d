#include "services/DesktopLink.h"

#include "services/DesktopActionError.h"
#include "utils/text/Text.h"

#include <QUrlQuery>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;
using Plain = DesktopActionError::Plain;

namespace {

bool isBlank(QChar c)
{
    return c.isSpace() || c.category() == QChar::Other_Control;
}

// Some mail programs put a file of this machine into the mail for it, and the person sees only the mail.
bool attachesFile(const QUrl &url)
{
    const auto items = QUrlQuery(url).queryItems(QUrl::FullyDecoded);
    return std::any_of(items.begin(), items.end(), [](const auto &item) {
        return item.first.startsWith("attach"_L1, Qt::CaseInsensitive);
    });
}

} // namespace

QUrl DesktopLink::parsed(const QString &text)
{
    const QString trimmed = Text::trimmed(text);
    const QUrl url(trimmed);
    if (trimmed.isEmpty() || std::any_of(trimmed.begin(), trimmed.end(), isBlank) || !url.isValid())
        throw DesktopActionError(Plain::invalidURL);
    const QString scheme = url.scheme().toLower();
    if (isMail(url)) {
        if (attachesFile(url))
            throw DesktopActionError(Plain::invalidURL);
        return url;
    }
    if (scheme != "https"_L1 && scheme != "http"_L1)
        throw DesktopActionError(DesktopActionError::DisallowedScheme{scheme});
    if (url.host().isEmpty())
        throw DesktopActionError(Plain::invalidURL);
    return url;
}

QString DesktopLink::shown(const QUrl &url)
{
    return url.toString(QUrl::FullyEncoded);
}

QString DesktopLink::destination(const QUrl &url)
{
    return isMail(url) ? url.path(QUrl::FullyDecoded).simplified() : url.host(QUrl::FullyEncoded).toLower();
}

bool DesktopLink::isMail(const QUrl &url)
{
    return url.scheme().toLower() == "mailto"_L1;
}

} // namespace morvane
