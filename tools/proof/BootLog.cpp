#include "BootLog.h"

#include "Options.h"

#include "utils/bytes/Hex.h"
#include "utils/text/Json.h"

#include <QJsonDocument>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr std::int64_t replayedRegister = 3;
constexpr std::int64_t runtimeEventType = 0x08000001; // the type that a replay hashes into the register

// A log's own spelling of a member, else a list's.
QJsonValue member(const QJsonObject &entry, QLatin1StringView logged, QLatin1StringView listed)
{
    const QJsonValue value = entry.value(logged);
    return value.isUndefined() ? entry.value(listed) : value;
}

class Reader {
public:
    explicit Reader(const QString &path)
        : m_path(path)
    {}

    void add(const QJsonValue &value)
    {
        const QJsonObject entry = value.toObject();
        const auto reg = Json::integer(entry, "imr"_L1);
        if (reg && *reg != replayedRegister)
            return;
        const auto type = Json::integer(entry, "event_type"_L1);
        const QJsonValue name = member(entry, "event"_L1, "name"_L1);
        const QJsonValue payload = member(entry, "event_payload"_L1, "payload"_L1);
        const bool hasPayload = payload.isString();
        require(name.isString() && (hasPayload || payload.isNull() || payload.isUndefined()) &&
                type.value_or(runtimeEventType) == runtimeEventType);
        VeniceBootEvent event{name.toString(), std::nullopt};
        if (auto *const live = liveValue(event.name); live && hasPayload)
            *live = bytes(payload.toString());
        else if (hasPayload)
            event.payload = payload.toString();
        log.events.push_back(event);
    }

    void require(bool holds) const
    {
        if (!holds)
            throw UsageError(u"%1 is not a JSON array of boot events"_s.arg(m_path));
    }

    BootLog log;

private:
    std::optional<QByteArray> *liveValue(const QString &name)
    {
        return name == "compose-hash"_L1  ? &log.composeHash
               : name == "instance-id"_L1 ? &log.instanceID
                                          : nullptr;
    }

    QByteArray bytes(const QString &payload) const
    {
        const auto decoded = Hex::decode(payload);
        require(decoded.has_value());
        return *decoded;
    }

    QString m_path;
};

} // namespace

BootLog BootLog::read(const QByteArray &json, const QString &path)
{
    Reader reader(path);
    const auto document = QJsonDocument::fromJson(json);
    reader.require(document.isArray());
    for (const QJsonValue &value : document.array())
        reader.add(value);
    return reader.log;
}

} // namespace morvane
