#include "security/SecretServiceKeyring.h"

#include "async/CancelledError.h"
#include "utils/text/Product.h"

#include <QFileInfo>
#include <QtGlobal>

#include <libsecret/secret.h>

#include <algorithm>
#include <memory>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

struct Unreference {
    void operator()(gpointer object) const { g_object_unref(object); }
};
template <typename T>
using Reference = std::unique_ptr<T, Unreference>;

struct FreeTable {
    void operator()(GHashTable *table) const { g_hash_table_unref(table); }
};
using Attributes = std::unique_ptr<GHashTable, FreeTable>;

struct ReleaseValue {
    void operator()(SecretValue *value) const { secret_value_unref(value); }
};
using Value = std::unique_ptr<SecretValue, ReleaseValue>;

using Items = std::vector<Reference<SecretItem>>;

constexpr const char *serviceAttribute = "service";
constexpr const char *accountAttribute = "account";
constexpr const char *presenceAttribute = "user-presence";
constexpr const char *presenceRequired = "required";

const SecretSchema *schema()
{
    // Items are found by service and account alone: older builds wrote them under other schema names.
    static const SecretSchema instance{"ai.morvane.Secret",
                                       SECRET_SCHEMA_DONT_MATCH_NAME,
                                       {{serviceAttribute, SECRET_SCHEMA_ATTRIBUTE_STRING},
                                        {accountAttribute, SECRET_SCHEMA_ATTRIBUTE_STRING},
                                        {presenceAttribute, SECRET_SCHEMA_ATTRIBUTE_STRING},
                                        {nullptr, SECRET_SCHEMA_ATTRIBUTE_STRING}},
                                       0,
                                       nullptr,
                                       nullptr,
                                       nullptr,
                                       nullptr,
                                       nullptr,
                                       nullptr,
                                       nullptr};
    return &instance;
}

bool isBusError(const GError &error, std::initializer_list<int> codes)
{
    return error.domain == G_DBUS_ERROR && std::find(codes.begin(), codes.end(), error.code) != codes.end();
}

KeychainStatus statusOf(const GError &error)
{
    if (isBusError(error, {G_DBUS_ERROR_SERVICE_UNKNOWN, G_DBUS_ERROR_NAME_HAS_NO_OWNER,
                           G_DBUS_ERROR_NO_SERVER, G_DBUS_ERROR_DISCONNECTED, G_DBUS_ERROR_ACCESS_DENIED,
                           G_DBUS_ERROR_SPAWN_EXEC_FAILED, G_DBUS_ERROR_SPAWN_CHILD_EXITED,
                           G_DBUS_ERROR_SPAWN_CHILD_SIGNALED, G_DBUS_ERROR_SPAWN_FAILED,
                           G_DBUS_ERROR_SPAWN_SERVICE_NOT_FOUND, G_DBUS_ERROR_UNKNOWN_OBJECT}))
        return KeychainStatus::NotAvailable;
    if (error.domain == SECRET_ERROR && error.code == SECRET_ERROR_IS_LOCKED)
        return KeychainStatus::InteractionNotAllowed;
    return KeychainStatus::InputOutput;
}

// Takes the error that a library call filled in, and throws when there is one.
class Outcome {
public:
    Outcome() = default;
    ~Outcome() { g_clear_error(&m_error); }
    Outcome(const Outcome &) = delete;
    Outcome &operator=(const Outcome &) = delete;

    GError **out() { return &m_error; }
    [[nodiscard]] bool failed() const { return m_error != nullptr; }
    void check() const
    {
        if (m_error)
            throw SecretStoreError(statusOf(*m_error));
    }

private:
    GError *m_error = nullptr;
};

// Signals of the proxies made during a call go to a context of the call's own instead of the GUI thread's.
class OwnContext {
public:
    OwnContext()
        : m_context(g_main_context_new())
    {
        g_main_context_push_thread_default(m_context);
    }
    ~OwnContext()
    {
        g_main_context_pop_thread_default(m_context);
        g_main_context_unref(m_context);
    }
    OwnContext(const OwnContext &) = delete;
    OwnContext &operator=(const OwnContext &) = delete;

private:
    GMainContext *m_context;
};

// Without an address the library would start a bus of its own, which nobody ends.
bool hasBusAddress()
{
    return qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS") ||
           QFileInfo::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + "/bus"_L1);
}

Reference<GDBusConnection> connectToBus()
{
    if (!hasBusAddress())
        throw SecretStoreError(KeychainStatus::NotAvailable);
    Outcome outcome;
    Reference<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, outcome.out()));
    if (!bus)
        throw SecretStoreError(KeychainStatus::NotAvailable);
    g_dbus_connection_set_exit_on_close(bus.get(), FALSE); // a bus that ends must not end us
    return bus;
}

// One conversation with the service.
class Session {
public:
    Session()
        : m_bus(connectToBus())
    {
        Outcome outcome;
        m_service.reset(secret_service_open_sync(SECRET_TYPE_SERVICE, nullptr, SECRET_SERVICE_OPEN_SESSION,
                                                 nullptr, outcome.out()));
        outcome.check();
    }

    [[nodiscard]] SecretService *service() const { return m_service.get(); }

    // Nothing when no keyring was ever made.
    [[nodiscard]] Reference<SecretCollection> defaultCollection() const
    {
        Outcome outcome;
        Reference<SecretCollection> collection(secret_collection_for_alias_sync(
            service(), SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_NONE, nullptr, outcome.out()));
        outcome.check();
        return collection;
    }

    // Items of all keyrings with these attributes, locked ones included, newest first.
    [[nodiscard]] Items search(const Attributes &attributes, int flags) const
    {
        Outcome outcome;
        GList *const found = secret_service_search_sync(
            service(), nullptr, attributes.get(), static_cast<SecretSearchFlags>(SECRET_SEARCH_ALL | flags),
            nullptr, outcome.out());
        Items items;
        for (GList *node = found; node; node = node->next)
            items.emplace_back(SECRET_ITEM(node->data));
        g_list_free(found);
        outcome.check();
        std::stable_sort(items.begin(), items.end(), [](const auto &a, const auto &b) {
            return secret_item_get_modified(a.get()) > secret_item_get_modified(b.get());
        });
        return items;
    }

private:
    OwnContext m_context;
    Reference<GDBusConnection> m_bus;
    Reference<SecretService> m_service;
};

Attributes attributesOf(const QString &service)
{
    Attributes table(g_hash_table_new_full(g_str_hash, g_str_equal, g_free, g_free));
    g_hash_table_insert(table.get(), g_strdup(serviceAttribute), g_strdup(service.toUtf8().constData()));
    return table;
}

Attributes attributesOf(const QString &service, const QString &account)
{
    auto table = attributesOf(service);
    g_hash_table_insert(table.get(), g_strdup(accountAttribute), g_strdup(account.toUtf8().constData()));
    return table;
}

bool isLocked(const Reference<SecretItem> &item)
{
    return secret_item_get_locked(item.get());
}

std::optional<QString> attribute(SecretItem *item, const char *name)
{
    const Attributes attributes(secret_item_get_attributes(item));
    const auto *const value = static_cast<const char *>(g_hash_table_lookup(attributes.get(), name));
    return value ? std::optional(QString::fromUtf8(value)) : std::nullopt;
}

// Of an unlocked item whose secret was loaded.
std::optional<SecretStoring::Item> itemFrom(SecretItem *item)
{
    const auto account = attribute(item, accountAttribute);
    const Value secret(secret_item_get_secret(item));
    if (!account || !secret)
        return std::nullopt;
    gsize length = 0;
    const gchar *const bytes = secret_value_get(secret.get(), &length);
    const bool guarded = attribute(item, presenceAttribute) == QLatin1StringView(presenceRequired);
    return SecretStoring::Item{*account, QByteArray(bytes, static_cast<qsizetype>(length)),
                               guarded ? UserPresence::Required : UserPresence::NotRequired};
}

Value valueOf(const QByteArray &bytes)
{
    return Value(secret_value_new(bytes.constData(), bytes.size(), "text/plain"));
}

[[noreturn]] void refuseLocked()
{
    throw SecretStoreError(KeychainStatus::InteractionNotAllowed);
}

// A missing item is one that an open keyring does not have: a locked one may hide what it holds.
void requireOpenKeyring(const Session &session)
{
    const auto collection = session.defaultCollection();
    if (!collection || secret_collection_get_locked(collection.get()))
        refuseLocked();
}

// Unlocked items of the account; throws when there are only locked ones, or it cannot be known.
Items openItems(const Session &session, const Attributes &attributes, int flags)
{
    auto items = session.search(attributes, flags);
    const bool foundLocked = std::erase_if(items, isLocked) > 0;
    if (items.empty() && foundLocked)
        refuseLocked();
    if (items.empty())
        requireOpenKeyring(session);
    return items;
}

void deleteItem(SecretItem *item)
{
    Outcome outcome;
    secret_item_delete_sync(item, nullptr, outcome.out());
    outcome.check();
}

// Ends a call to the service, and its prompt with it, when the caller stops.
class Cancellation {
public:
    explicit Cancellation(const std::stop_token &stop)
        : m_onStop(stop, Cancel{m_cancellable.get()})
    {}

    [[nodiscard]] GCancellable *get() const { return m_cancellable.get(); }

private:
    struct Cancel {
        GCancellable *cancellable;
        void operator()() const { g_cancellable_cancel(cancellable); }
    };
    Reference<GCancellable> m_cancellable{g_cancellable_new()};
    std::stop_callback<Cancel> m_onStop;
};

// The desktop asks for a first password.
void makeKeyring(const Session &session, const Cancellation &cancellation)
{
    Outcome outcome;
    const Reference<SecretCollection> made(
        secret_collection_create_sync(session.service(), "Default keyring", SECRET_COLLECTION_DEFAULT,
                                      SECRET_COLLECTION_CREATE_NONE, cancellation.get(), outcome.out()));
}

void unlockAll(const Session &session, SecretCollection *collection, const Items &items,
               const Cancellation &cancellation)
{
    GList *objects = nullptr;
    if (secret_collection_get_locked(collection))
        objects = g_list_append(objects, collection);
    for (const auto &item : items) {
        if (isLocked(item))
            objects = g_list_append(objects, item.get());
    }
    Outcome outcome;
    secret_service_unlock_sync(session.service(), objects, cancellation.get(), nullptr, outcome.out());
    g_list_free(objects);
}

SecretStoring::Condition conditionOf(const Session &session, const QString &service)
{
    const auto collection = session.defaultCollection();
    if (!collection || secret_collection_get_locked(collection.get()))
        return SecretStoring::Condition::Locked;
    const auto items = session.search(attributesOf(service), SECRET_SEARCH_NONE);
    return std::any_of(items.begin(), items.end(), isLocked) ? SecretStoring::Condition::Locked
                                                             : SecretStoring::Condition::Open;
}

} // namespace

SecretStoring::Condition SecretServiceKeyring::condition(const QString &service)
{
    try {
        const Session session;
        return conditionOf(session, service);
    } catch (const SecretStoreError &error) {
        if (error.status() == KeychainStatus::NotAvailable)
            return Condition::Absent;
        throw;
    }
}

void SecretServiceKeyring::unlock(const QString &service, std::stop_token stop)
{
    {
        const Session session;
        const Cancellation cancellation(stop);
        if (const auto collection = session.defaultCollection()) {
            const auto items = session.search(attributesOf(service), SECRET_SEARCH_NONE);
            unlockAll(session, collection.get(), items, cancellation);
        } else {
            makeKeyring(session, cancellation);
        }
    }
    throwIfStopped(stop);
    // Dismissing the prompt is no error to the library, so what counts is what is open now.
    const Session session;
    if (conditionOf(session, service) != Condition::Open)
        throw SecretStoreError(KeychainStatus::UserCancelled);
}

std::optional<SecretStoring::Item> SecretServiceKeyring::find(const QString &service, const QString &account)
{
    const Session session;
    const auto items = openItems(session, attributesOf(service, account), SECRET_SEARCH_LOAD_SECRETS);
    return items.empty() ? std::nullopt : itemFrom(items.front().get());
}

std::vector<SecretStoring::Item> SecretServiceKeyring::items(const QString &service)
{
    const Session session;
    std::vector<Item> result;
    for (const auto &found : openItems(session, attributesOf(service), SECRET_SEARCH_LOAD_SECRETS)) {
        if (auto item = itemFrom(found.get()))
            result.push_back(std::move(*item));
    }
    return result;
}

void SecretServiceKeyring::add(const QString &service, const Item &item)
{
    const Session session;
    requireOpenKeyring(session);
    const auto key = attributesOf(service, item.account);
    auto former = session.search(key, SECRET_SEARCH_NONE);
    std::erase_if(former, isLocked); // in another keyring; removing it would prompt
    const auto attributes = attributesOf(service, item.account);
    if (item.presence == UserPresence::Required)
        g_hash_table_insert(attributes.get(), g_strdup(presenceAttribute), g_strdup(presenceRequired));
    const auto label = Product::name + ": "_L1 + item.account;

    Outcome outcome;
    const Reference<SecretItem> made(secret_item_create_sync(
        session.defaultCollection().get(), schema(), attributes.get(), label.toUtf8().constData(),
        valueOf(item.value).get(), SECRET_ITEM_CREATE_NONE, nullptr, outcome.out()));
    outcome.check();
    for (const auto &old : former)
        deleteItem(old.get());
}

bool SecretServiceKeyring::update(const QString &service, const QString &account, const QByteArray &value)
{
    const Session session;
    const auto items = openItems(session, attributesOf(service, account), SECRET_SEARCH_NONE);
    if (items.empty())
        return false;
    Outcome outcome;
    secret_item_set_secret_sync(items.front().get(), valueOf(value).get(), nullptr, outcome.out());
    outcome.check();
    return true;
}

bool SecretServiceKeyring::remove(const QString &service, const QString &account)
{
    const Session session;
    const auto items = openItems(session, attributesOf(service, account), SECRET_SEARCH_NONE);
    for (const auto &item : items)
        deleteItem(item.get());
    return !items.empty();
}

} // namespace morvane
