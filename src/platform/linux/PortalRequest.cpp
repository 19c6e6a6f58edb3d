#include "platform/linux/PortalRequest.h"

#include "async/CancelledError.h"
#include "async/Clock.h"
#include "platform/linux/PortalCall.h"
#include "platform/linux/ProcessPrivacy.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <memory>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString service = PortalCall::service;
const QString requestInterface = u"org.freedesktop.portal.Request"_s;
// The process can be looked at meanwhile, so not for as long as a call may take.
constexpr int callMilliseconds = 5000;

} // namespace

PortalRequest::PortalRequest(QDBusConnection bus, Ends::Producer end)
    : m_bus(std::move(bus))
    , m_end(std::move(end))
    , m_token(PortalCall::newToken())
    , m_path(PortalCall::pathOf(m_bus, u"request", m_token))
{}

QCoro::Task<PortalRequest::End> PortalRequest::run(QDBusConnection bus, QString interface, QString method,
                                                   QVariantList arguments, Clock *clock, std::stop_token stop)
{
    auto [ends, producer] = Ends::make();
    const std::unique_ptr<PortalRequest> request(new PortalRequest(bus, producer));
    request->ask(interface, method, arguments);
    const auto alarm = clock->after(patience, [asked = request.get()] {
        asked->takeBack();
        asked->finish(End::failed);
    });
    try {
        const std::optional<End> end = co_await ends.next(stop);
        co_return end.value_or(End::failed);
    } catch (const CancelledError &) {
        request->takeBack();
        throw;
    }
}

void PortalRequest::ask(const QString &interface, const QString &method, QVariantList arguments)
{
    // Before the call, since the answer may come first.
    m_bus.connect(service, m_path, requestInterface, u"Response"_s, this, SLOT(responded(uint, QVariantMap)));
    auto call = QDBusMessage::createMethodCall(service, PortalCall::object, interface, method);
    arguments.append(QVariantMap{{u"handle_token"_s, m_token}});
    call.setArguments(arguments);
    auto visible = std::make_shared<ProcessPrivacy::Pause>();
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call, callMilliseconds), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, visible]() mutable {
        watcher->deleteLater();
        visible.reset();
        if (watcher->isError())
            finish(PortalCall::saysThatNoneIsThere(watcher->error()) ? End::noPortal : End::failed);
    });
}

void PortalRequest::takeBack()
{
    m_bus.asyncCall(QDBusMessage::createMethodCall(service, m_path, requestInterface, u"Close"_s));
}

void PortalRequest::responded(uint response, const QVariantMap &)
{
    constexpr uint succeeded = 0;
    constexpr uint cancelled = 1;
    finish(response == succeeded ? End::done : response == cancelled ? End::dismissed : End::failed);
}

void PortalRequest::finish(End end)
{
    m_end.yield(end);
    m_end.finish();
}

} // namespace morvane
