#include "app/PrivateCloudParts.h"

#include "ai/private_cloud/VeniceE2EEProvider.h"
#include "app/Storage.h"
#include "attestation/ProofWatch.h"
#include "attestation/VeniceAttestationService.h"
#include "attestation/VeniceMeasurementLists.h"
#include "attestation/evidence/BundledAllowlist.h"
#include "deployment/DeploymentValues.h"
#include "network/AppNetwork.h"
#include "persistence/SettingsStore.h"
#include "security/LocalDataVault.h"
#include "security/ServiceIdentity.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using ListStore = VeniceMeasurementListStore;

// A relay of the command line stands only where the deployment itself names one.
PrivateCloud deployedCloud(const CommandLine &commandLine)
{
    const QString address(DeploymentValues::privateCloudURL);
    PrivateCloud cloud;
    cloud.devRelay = DevRelay::origin(address);
    if (!cloud.devRelay)
        cloud.endpoint = address;
    else if (commandLine.devRelay)
        cloud.devRelay = commandLine.devRelay;
    return cloud;
}

std::vector<QByteArray> listSigningKeys()
{
    const QByteArray json(DeploymentValues::listSigningKeys.data(), DeploymentValues::listSigningKeys.size());
    std::vector<QByteArray> keys;
    const QJsonArray texts = QJsonDocument::fromJson(json).array();
    for (const QJsonValue &text : texts)
        keys.push_back(QByteArray::fromBase64(text.toString().toLatin1()));
    return keys;
}

VeniceMeasurementLists::Parts listParts(const PrivateCloudParts::Services &services,
                                        const PrivateCloud &cloud)
{
    return {.store = ListStore(*services.storage.vault, ListStore::defaultDirectory(services.storage.folders),
                               cloud.devRelay ? ListStore::developmentFileName : ListStore::fileName),
            .anchors = VeniceMeasurementAnchorStore(&services.secrets.keychain),
            .fetch = VeniceListFetch(services.network, services.clock, cloud.baseURL()),
            .bundled = BundledAllowlist::ofThisBuild(),
            .publicKeys = listSigningKeys()};
}

// No answer of the relay tells whether it takes sealed turns: a deployment that names servers to be proved
// does. What is known already stays.
void learnSealedPath(SettingsStore &settings, const VeniceMeasurementLists::Parts &parts)
{
    const bool canProve = !parts.publicKeys.empty() || !parts.bundled.stacksByModel.empty();
    if (!canProve || settings.hostedRelayStateKnown())
        return;
    settings.setHostedRelayEncrypted(true);
    settings.setHostedRelayStateKnown(true);
}

QCoro::Task<> prepared(VeniceMeasurementLists &lists, std::stop_token stop)
{
    co_await lists.prepare(stop);
}

} // namespace

PrivateCloudParts::PrivateCloudParts(const CommandLine &commandLine, const Services &services)
    : cloud(deployedCloud(commandLine))
    , watch(std::make_unique<ProofWatch>())
{
    if (cloud.baseURL().isEmpty())
        return;
    VeniceMeasurementLists::Parts parts = listParts(services, cloud);
    learnSealedPath(*services.storage.settings, parts);
    lists = std::make_unique<VeniceMeasurementLists>(services.work, std::move(parts));
    attestation = std::make_unique<VeniceAttestationService>(
        VeniceAttestationService::Parts{.baseURLString = cloud.baseURL(),
                                        .sessions = services.network,
                                        .clock = services.clock,
                                        .work = services.work,
                                        .lists = lists.get(),
                                        .pins = EvidencePins::ofThisBuild()});
    cloud.makeProvider = [services, this] {
        return std::make_shared<VeniceE2EEProvider>(*attestation, services.network, services.proofs,
                                                    services.clock, watch.get());
    };
    // In the form in which the search service knows its own number.
    cloud.apiKey = [&identity = services.identity]() -> std::optional<QString> {
        return u"qf_"_s + identity.credential(ServiceIdentity::Service::Hosted);
    };
}

PrivateCloudParts::~PrivateCloudParts() = default;

std::function<QString()> PrivateCloudParts::acceptedListText()
{
    if (!attestation)
        return {};
    return [this] {
        readLists();
        return attestation->acceptedListText();
    };
}

void PrivateCloudParts::readLists()
{
    if (!m_reading)
        m_reading = TaskHandle::start([this](std::stop_token stop) { return prepared(*lists, stop); });
}

} // namespace morvane
