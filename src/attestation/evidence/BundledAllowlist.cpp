#include "attestation/evidence/BundledAllowlist.h"

#include "deployment/DeploymentValues.h"
#include "utils/text/Json.h"

#include <QJsonDocument>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Stack = VeniceMeasurementAllowlist::Stack;

// Reads values of a stack, and remembers whether one was missing.
class StackReader {
public:
    QString text(const QJsonObject &object, QLatin1StringView key)
    {
        return known(Json::string(object, key));
    }

    std::int64_t length(const QJsonObject &object, QLatin1StringView key)
    {
        return known(Json::integer(object, key));
    }

    bool flag(const QJsonObject &object, QLatin1StringView key) { return known(Json::boolean(object, key)); }

    std::vector<QJsonObject> objects(const QJsonObject &object, QLatin1StringView key)
    {
        return known(Json::objects(object, key));
    }

    VeniceReviewedConfiguration configuration(const QJsonObject &object)
    {
        return {.id = text(object, "id"_L1),
                .label = text(object, "label"_L1),
                .prefixLength = length(object, "prefixLength"_L1),
                .prefixSHA256 = text(object, "prefixSHA256"_L1),
                .suffixLength = length(object, "suffixLength"_L1),
                .suffixSHA256 = text(object, "suffixSHA256"_L1)};
    }

    // A null payload is the live server's; an absent one is not known.
    VeniceBootEvent bootEvent(const QJsonObject &object)
    {
        VeniceBootEvent event{text(object, "name"_L1), std::nullopt};
        if (!object.value("payload"_L1).isNull())
            event.payload = text(object, "payload"_L1);
        return event;
    }

    [[nodiscard]] bool isComplete() const { return m_complete; }

private:
    template <typename T>
    T known(std::optional<T> value)
    {
        m_complete = m_complete && value.has_value();
        return std::move(value).value_or(T());
    }

    bool m_complete = true;
};

std::optional<Stack> readStack(const QJsonObject &object)
{
    StackReader reader;
    Stack stack;
    stack.label = reader.text(object, "label"_L1);
    stack.mrtd = reader.text(object, "mrtd"_L1);
    stack.rtmr0 = reader.text(object, "rtmr0"_L1);
    stack.rtmr1 = reader.text(object, "rtmr1"_L1);
    stack.rtmr2 = reader.text(object, "rtmr2"_L1);
    stack.requiresGPUEvidence = reader.flag(object, "requiresGPUEvidence"_L1);
    for (const QJsonObject &configuration : reader.objects(object, "configurations"_L1))
        stack.configurations.push_back(reader.configuration(configuration));
    for (const QJsonObject &event : reader.objects(object, "bootEvents"_L1))
        stack.bootEvents.push_back(reader.bootEvent(event));
    return reader.isComplete() ? std::optional(stack) : std::nullopt;
}

} // namespace

VeniceMeasurementAllowlist BundledAllowlist::ofThisBuild()
{
    const auto servers = DeploymentValues::acceptedServers;
    return read(QByteArrayView(servers.data(), servers.size()));
}

VeniceMeasurementAllowlist BundledAllowlist::read(QByteArrayView json)
{
    VeniceMeasurementAllowlist allowlist;
    const auto stacks = QJsonDocument::fromJson(json.toByteArray()).array();
    for (const QJsonValue &value : stacks) {
        const QJsonObject object = value.toObject();
        const auto model = Json::string(object, "model"_L1);
        const auto stack = readStack(object);
        if (model && stack)
            allowlist.stacksByModel[*model].push_back(*stack);
    }
    return allowlist;
}

} // namespace morvane
