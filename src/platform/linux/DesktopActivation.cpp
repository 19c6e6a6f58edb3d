#include "platform/linux/DesktopActivation.h"

#include "utils/text/Identifier.h"
#include "utils/text/Product.h"

#include <QDBusConnectionInterface>
#include <QUrl>
#include <QUuid>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Made of the name, as the standard of desktop entries has it.
QString objectPath()
{
    return u'/' + QString(Product::desktopId).replace(u'.', u'/');
}

// Whoever was clicked hands its right to the focus on; older ones know it by the name of X11 alone.
QString tokenOf(const QVariantMap &platformData)
{
    const QString token = platformData.value(u"activation-token"_s).toString();
    return token.isEmpty() ? platformData.value(u"desktop-startup-id"_s).toString() : token;
}

std::optional<AppRequest> requestFor(const QString &action, const QString &parameter)
{
    if (action == "new-chat"_L1)
        return AppRequest{.chat = AppRequest::Chat::fresh};
    if (action == "new-ghost-chat"_L1)
        return AppRequest{.chat = AppRequest::Chat::ghost};
    if (action == "open-chat"_L1) {
        const QUuid chat = QUuid::fromString(parameter);
        return chat.isNull() ? std::nullopt : std::optional(AppRequest{.chatID = Identifier::text(chat)});
    }
    if (action == "ask"_L1 && !parameter.isEmpty())
        return AppRequest{.chat = AppRequest::Chat::fresh,
                          .words = parameter.left(DesktopActivation::mostCharacters)};
    return std::nullopt;
}

} // namespace

DesktopActivation::DesktopActivation(std::optional<QDBusConnection> bus, QObject *parent)
    : QObject(parent)
    , m_bus(std::move(bus))
{
    // Before the name, for which a call may wait already.
    if (m_bus && m_bus->registerObject(objectPath(), this, QDBusConnection::ExportAllSlots))
        m_bus->registerService(Product::desktopId);
}

DesktopActivation::~DesktopActivation()
{
    if (!m_bus)
        return;
    m_bus->unregisterService(Product::desktopId);
    m_bus->unregisterObject(objectPath());
}

void DesktopActivation::Activate(const QVariantMap &platformData)
{
    Q_EMIT asked({.activationToken = tokenOf(platformData)});
}

void DesktopActivation::Open(const QStringList &addresses, const QVariantMap &platformData)
{
    AppRequest request{.activationToken = tokenOf(platformData)};
    for (const QString &address : addresses.first(std::min(addresses.size(), mostFiles))) {
        const QUrl url(address);
        if (url.isLocalFile())
            request.files += url.toLocalFile();
    }
    Q_EMIT asked(request);
}

void DesktopActivation::ActivateAction(const QString &name, const QVariantList &parameter,
                                       const QVariantMap &platformData)
{
    auto request = requestFor(name, parameter.value(0).toString());
    if (!request)
        return; // also an action of a newer version's desktop entry
    request->activationToken = tokenOf(platformData);
    Q_EMIT asked(*request);
}

} // namespace morvane
