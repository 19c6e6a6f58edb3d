#include "ai/routing/ChatSource.h"

#include "ai/routing/ModelName.h"
#include "network/PrivateNetworkAddress.h"
#include "utils/text/DesktopWords.h"
#include "utils/text/Text.h"

#include <QUrl>

#include <array>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

bool isThisMachine(const QString &host)
{
    static constexpr std::array names{"localhost"_L1, "127.0.0.1"_L1, "::1"_L1, "[::1]"_L1, "0.0.0.0"_L1};
    return std::find(names.begin(), names.end(), host) != names.end();
}

QString displayHost(const QString &host, bool isPrivate)
{
    if (isThisMachine(host))
        return u"this %1"_s.arg(DesktopWords::here().device);
    QString shown = host;
    if (isPrivate)
        return shown.remove(".local"_L1);
    return shown.startsWith("api."_L1) ? shown.sliced(4) : shown;
}

} // namespace

ChatSource ChatSource::of(const QString &baseURLString, const QString &model)
{
    const QString address = Text::trimmed(baseURLString);
    if (address.isEmpty() && Text::trimmed(model).isEmpty())
        return {};
    const QString host = QUrl(address).host().toLower();
    if (host.isEmpty())
        return {};
    const bool isPrivate = PrivateNetworkAddress::isNear(host);
    if (isPrivate && ModelName::isOllamaCloud(model))
        return {Kind::ollamaCloud, {}, model};
    if (isThisMachine(host))
        return {Kind::thisMac, {}, model};
    if (isPrivate)
        return {Kind::network, displayHost(host, isPrivate), model};
    return {Kind::customCloud, displayHost(host, isPrivate), {}};
}

QString ChatSource::label() const
{
    switch (kind) {
    case Kind::morvaneCloud:
        return u"Private cloud"_s;
    case Kind::thisMac:
        return u"Local "_s + ModelName::shortName(model);
    case Kind::network:
        return u"Network "_s + ModelName::shortName(model);
    case Kind::customCloud:
        return host;
    case Kind::ollamaCloud:
        return ModelName::shortName(model) + u" · Ollama's cloud"_s;
    case Kind::notConfigured:
        return u"Not set up yet"_s;
    }
    return {};
}

QString ChatSource::destination() const
{
    switch (kind) {
    case Kind::thisMac:
        return u"Stays on this %1"_s.arg(DesktopWords::here().device);
    case Kind::network:
        return u"Goes to %1 on your network"_s.arg(host);
    case Kind::customCloud:
        return u"Goes to %1, a service you added"_s.arg(host);
    case Kind::ollamaCloud:
        return u"Goes to Ollama's cloud"_s;
    case Kind::morvaneCloud:
        return u"Sealed for the private cloud"_s;
    case Kind::notConfigured:
        return u"Not set up yet"_s;
    }
    return {};
}

QString ChatSource::whereRepliesRun() const
{
    switch (kind) {
    case Kind::thisMac:
    case Kind::notConfigured:
    case Kind::morvaneCloud:
        return u"on this %1"_s.arg(DesktopWords::here().device);
    case Kind::network:
        return u"on your network"_s;
    case Kind::customCloud:
    case Kind::ollamaCloud:
        return u"on the service you chose"_s;
    }
    return {};
}

} // namespace morvane
