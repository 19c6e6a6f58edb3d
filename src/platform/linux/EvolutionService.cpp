#include "platform/linux/EvolutionService.h"

#include "async/CancelledError.h"
#include "platform/linux/EventComponent.h"
#include "services/DesktopActionError.h"
#include "utils/log/Log.h"

#include <libecal/libecal.h>

namespace morvane {

using namespace Qt::StringLiterals;
using GLib::Failure;
using Plain = DesktopActionError::Plain;
using Registry = GLib::Reference<ESourceRegistry>;
using Source = GLib::Reference<ESource>;
using Client = GLib::Reference<EClient>;

namespace {

// Another number would be waited for in full, and none would wait for ever.
constexpr guint32 asSoonAsItAnswers = static_cast<guint32>(-1);

bool isDenied(const Failure &failure)
{
    return failure.is(G_DBUS_ERROR, G_DBUS_ERROR_ACCESS_DENIED) ||
           failure.is(G_DBUS_ERROR, G_DBUS_ERROR_AUTH_FAILED) ||
           failure.is(G_IO_ERROR, G_IO_ERROR_PERMISSION_DENIED) ||
           failure.is(E_CLIENT_ERROR, E_CLIENT_ERROR_PERMISSION_DENIED) ||
           failure.is(E_CLIENT_ERROR, E_CLIENT_ERROR_AUTHENTICATION_FAILED);
}

[[noreturn]] void fail(const Failure &failure, Plain otherwise)
{
    throw DesktopActionError(isDenied(failure) ? Plain::calendarAccessDenied : otherwise);
}

// One piece of work with the service: what cancels it, and what it is told by signals.
class Session {
public:
    explicit Session(const EvolutionService::Patience &patience)
        : m_patience(patience)
        , m_onStop(patience.stop, Cancel{this})
        , m_onDeadline(patience.deadline, Cancel{this})
        , m_onDeadlineOfWriting(patience.deadline, CancelWriting{this})
    {
        throwIfStopped(patience.stop);
    }

    [[nodiscard]] GCancellable *untilStopped() const { return m_either.handle(); }
    // For what must be known to have happened or not.
    [[nodiscard]] GCancellable *untilDeadline() const { return m_writing.handle(); }
    void throwIfStopped() const { morvane::throwIfStopped(m_patience.stop); }

private:
    static void throwIfStopped(const std::stop_token &stop) { morvane::throwIfStopped(stop); }

    struct Cancel {
        const Session *session;
        void operator()() const { session->m_either.cancel(); }
    };
    struct CancelWriting {
        const Session *session;
        void operator()() const { session->m_writing.cancel(); }
    };

    const EvolutionService::Patience m_patience;
    GLib::OwnContext m_context;
    GLib::Cancellation m_either;
    GLib::Cancellation m_writing;
    std::stop_callback<Cancel> m_onStop;
    std::stop_callback<Cancel> m_onDeadline;
    std::stop_callback<CancelWriting> m_onDeadlineOfWriting;
};

// The library's own connection to the bus would end the program together with the bus.
bool hasBus(const Session &session)
{
    if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
        return false; // asking for one would start it
    const auto bus =
        GLib::taken(g_bus_get_sync(G_BUS_TYPE_SESSION, session.untilStopped(), Failure().place()));
    if (!bus)
        return false;
    g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
    return !g_dbus_connection_is_closed(bus.get());
}

// Null when no service answers.
Registry registryOf(const Session &session)
{
    if (!hasBus(session)) {
        session.throwIfStopped();
        return {};
    }
    Failure failure;
    Registry registry(e_source_registry_new_sync(session.untilStopped(), failure.place()));
    if (registry)
        return registry;
    session.throwIfStopped();
    if (isDenied(failure))
        throw DesktopActionError(Plain::calendarAccessDenied);
    return {};
}

// Birthdays and the weather are calendars that nobody writes to.
bool takesEvents(ESource *source)
{
    auto *extension = E_SOURCE_BACKEND(e_source_get_extension(source, E_SOURCE_EXTENSION_CALENDAR));
    const GLib::Text backend(e_source_backend_dup_backend_name(extension));
    return backend && g_strcmp0(backend.get(), "contacts") != 0 && g_strcmp0(backend.get(), "weather") != 0;
}

CalendarStoring::Calendar described(ESource *source, const QString &defaultID)
{
    const QString id = QString::fromUtf8(e_source_get_uid(source));
    const GLib::Text name(e_source_dup_display_name(source));
    return {id, QString::fromUtf8(name.get()), id == defaultID};
}

Source defaultCalendar(ESourceRegistry *registry)
{
    return GLib::taken(e_source_registry_ref_default_calendar(registry));
}

Source calendarOf(ESourceRegistry *registry, const std::optional<QString> &id)
{
    Source source = id ? GLib::taken(e_source_registry_ref_source(registry, id->toUtf8().constData()))
                       : defaultCalendar(registry);
    if (!source || !e_source_registry_check_enabled(registry, source.get()))
        throw DesktopActionError(Plain::calendarUnavailable);
    return source;
}

Client connected(ESource *source, const Session &session)
{
    Failure failure;
    Client client(e_cal_client_connect_sync(source, E_CAL_CLIENT_SOURCE_TYPE_EVENTS, asSoonAsItAnswers,
                                            session.untilStopped(), failure.place()));
    session.throwIfStopped();
    if (!client)
        fail(failure, Plain::calendarUnavailable);
    return client;
}

} // namespace

std::optional<std::vector<CalendarStoring::Calendar>> EvolutionService::calendars(const Patience &patience)
{
    const Session session(patience);
    const Registry registry = registryOf(session);
    if (!registry)
        return std::nullopt;
    const Source usual = defaultCalendar(registry.get());
    const QString usualID = usual ? QString::fromUtf8(e_source_get_uid(usual.get())) : QString();
    std::vector<CalendarStoring::Calendar> calendars;
    GList *sources = e_source_registry_list_enabled(registry.get(), E_SOURCE_EXTENSION_CALENDAR);
    for (const GList *each = sources; each; each = each->next)
        if (auto *source = E_SOURCE(each->data); takesEvents(source))
            calendars.push_back(described(source, usualID));
    g_list_free_full(sources, &g_object_unref);
    return calendars;
}

std::optional<CalendarStoring::Place> EvolutionService::add(const CalendarStoring::Event &event,
                                                            const QByteArray &zoneName,
                                                            const std::optional<QString> &calendarID,
                                                            const Patience &patience)
{
    const Session session(patience);
    const Registry registry = registryOf(session);
    if (!registry)
        return std::nullopt;
    const Source source = calendarOf(registry.get(), calendarID);
    const Client client = connected(source.get(), session);
    ICalTimezone *zone = EventComponent::zone(zoneName);
    const auto component = EventComponent::event(event, zone);
    Failure failure;
    char *uid = nullptr;
    // A calendar that knows the zone already may refuse to be told of it.
    e_cal_client_add_timezone_sync(E_CAL_CLIENT(client.get()), zone, session.untilDeadline(),
                                   Failure().place());
    if (!e_cal_client_create_object_sync(E_CAL_CLIENT(client.get()), component.get(),
                                         E_CAL_OPERATION_FLAG_NONE, &uid, session.untilDeadline(),
                                         failure.place())) {
        Log::error(Log::Category::App, "Calendar save failed: %s"_L1, {failure.words()});
        fail(failure, Plain::calendarSaveFailed);
    }
    const GLib::Text id(uid);
    const auto calendar = described(source.get(), {});
    return CalendarStoring::Place{calendar.id, calendar.name, QString::fromUtf8(id.get())};
}

void EvolutionService::remove(const CalendarStoring::Place &place, const Patience &patience)
{
    const Session session(patience);
    const Registry registry = registryOf(session);
    if (!registry)
        throw DesktopActionError(Plain::calendarUnavailable);
    const Source source = calendarOf(registry.get(), place.calendarID);
    const Client client = connected(source.get(), session);
    Failure failure;
    if (e_cal_client_remove_object_sync(E_CAL_CLIENT(client.get()), place.eventID.toUtf8().constData(),
                                        nullptr, E_CAL_OBJ_MOD_ALL, E_CAL_OPERATION_FLAG_NONE,
                                        session.untilDeadline(), failure.place()) ||
        failure.is(E_CAL_CLIENT_ERROR, E_CAL_CLIENT_ERROR_OBJECT_NOT_FOUND))
        return;
    Log::error(Log::Category::App, "Calendar save failed: %s"_L1, {failure.words()});
    fail(failure, Plain::calendarSaveFailed);
}

} // namespace morvane
