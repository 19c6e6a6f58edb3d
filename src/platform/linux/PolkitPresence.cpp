#include "platform/linux/PolkitPresence.h"

#include <QUuid>

#include <gio/gio.h>

#include <memory>
#include <optional>

namespace morvane {

namespace {

constexpr auto service = "org.freedesktop.PolicyKit1";
constexpr auto authority = "/org/freedesktop/PolicyKit1/Authority";
constexpr auto interface = "org.freedesktop.PolicyKit1.Authority";
constexpr auto action = "ai.morvane.MorvaneGPT.unlock";
constexpr guint32 mayAsk = 1;              // AllowUserInteraction
constexpr int questionMilliseconds = 3000; // for what takes no person

struct Release {
    void operator()(gpointer object) const { g_object_unref(object); }
    void operator()(GVariant *variant) const { g_variant_unref(variant); }
    void operator()(GError *error) const { g_error_free(error); }
    void operator()(char *text) const { g_free(text); }
};
template <typename T>
using Owned = std::unique_ptr<T, Release>;

struct Reply {
    Owned<GVariant> values; // null: it failed
    Owned<GError> error;
};

// A connection of its own, so that its end is no concern of anybody else's.
class SystemBus {
public:
    SystemBus()
    {
        const Owned<char> address(g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr));
        if (!address)
            return;
        m_connection.reset(g_dbus_connection_new_for_address_sync(
            address.get(),
            static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                              G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
            nullptr, nullptr, nullptr));
    }

    [[nodiscard]] bool isThere() const { return m_connection != nullptr; }
    [[nodiscard]] const char *name() const { return g_dbus_connection_get_unique_name(m_connection.get()); }

    // Takes `arguments`.
    [[nodiscard]] Reply call(const char *method, GVariant *arguments, int patienceMilliseconds,
                             GCancellable *cancellable = nullptr) const
    {
        GError *error = nullptr;
        Owned<GVariant> values(g_dbus_connection_call_sync(m_connection.get(), service, authority, interface,
                                                           method, arguments, nullptr, G_DBUS_CALL_FLAGS_NONE,
                                                           patienceMilliseconds, cancellable, &error));
        return {std::move(values), Owned<GError>(error)};
    }

    // Doesn't wait for an answer.
    void tell(const char *method, GVariant *arguments) const
    {
        g_dbus_connection_call(m_connection.get(), service, authority, interface, method, arguments, nullptr,
                               G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr, nullptr);
        g_dbus_connection_flush_sync(m_connection.get(), nullptr, nullptr);
    }

private:
    Owned<GDBusConnection> m_connection;
};

// This process, known by its connection.
GVariant *ourselves(const SystemBus &bus)
{
    return g_variant_new_parsed("('system-bus-name', {'name': <%s>})", bus.name());
}

// polkit takes details from its owner alone, so the prompt's words stand in the action's file.
GVariant *question(const SystemBus &bus, guint32 flags, const QByteArray &id)
{
    return g_variant_new("(@(sa{sv})sa{ss}us)", ourselves(bus), action, nullptr, flags, id.constData());
}

struct Judgement {
    bool isAuthorized = false;
    bool isChallenge = false; // an answer of the person's would do
    bool isDismissed = false;
};

std::optional<Judgement> judgementOf(const Reply &reply)
{
    if (!reply.values || !g_variant_is_of_type(reply.values.get(), G_VARIANT_TYPE("((bba{ss}))")))
        return std::nullopt;
    gboolean isAuthorized = FALSE;
    gboolean isChallenge = FALSE;
    GVariant *details = nullptr;
    g_variant_get(reply.values.get(), "((bb@a{ss}))", &isAuthorized, &isChallenge, &details);
    const Owned<GVariant> owned(details);
    const char *dismissed = nullptr;
    const bool isDismissed =
        g_variant_lookup(details, "polkit.dismissed", "&s", &dismissed) && *dismissed != '\0';
    return Judgement{isAuthorized == TRUE, isChallenge == TRUE, isDismissed};
}

bool isAgentThere(const SystemBus &bus)
{
    const QByteArray session = qgetenv("XDG_SESSION_ID");
    const auto subject = [&session, &bus] {
        return session.isEmpty()
                   ? ourselves(bus)
                   : g_variant_new_parsed("('unix-session', {'session-id': <%s>})", session.constData());
    };
    constexpr auto ours = "/ai/morvane/MorvaneGPT/Agent";
    const Reply reply = bus.call("RegisterAuthenticationAgent",
                                 g_variant_new("(@(sa{sv})ss)", subject(), "C", ours), questionMilliseconds);
    if (reply.values) {
        (void)bus.call("UnregisterAuthenticationAgent", g_variant_new("(@(sa{sv})s)", subject(), ours),
                       questionMilliseconds);
        return false;
    }
    return QByteArrayView(reply.error->message).contains("already exists");
}

} // namespace

PolkitPresence::PolkitPresence(std::chrono::milliseconds patience)
    : m_patience(patience)
{}

bool PolkitPresence::canConfirm() const
{
    const SystemBus bus;
    if (!bus.isThere())
        return false;
    const auto judged =
        judgementOf(bus.call("CheckAuthorization", question(bus, 0, {}), questionMilliseconds));
    if (!judged)
        return false;
    return judged->isAuthorized || (judged->isChallenge && isAgentThere(bus));
}

UserPresenceConfirming::Answer PolkitPresence::confirm(const QString &, std::stop_token stop)
{
    const SystemBus bus;
    if (!bus.isThere())
        return Answer::Unavailable;
    const QByteArray id = QUuid::createUuid().toByteArray(QUuid::WithoutBraces);
    const Owned<GCancellable> cancellable(g_cancellable_new());
    const std::stop_callback onStop(stop, [&cancellable] { g_cancellable_cancel(cancellable.get()); });
    const auto judged = judgementOf(bus.call("CheckAuthorization", question(bus, mayAsk, id),
                                             static_cast<int>(m_patience.count()), cancellable.get()));
    if (!judged) {
        bus.tell("CancelCheckAuthorization", g_variant_new("(s)", id.constData())); // takes the prompt away
        return stop.stop_requested() ? Answer::Dismissed : Answer::Unavailable;
    }
    if (judged->isAuthorized)
        return Answer::Confirmed;
    if (judged->isDismissed || stop.stop_requested())
        return Answer::Dismissed;
    return judged->isChallenge ? Answer::Unavailable : Answer::Refused; // nobody was there to ask
}

} // namespace morvane
