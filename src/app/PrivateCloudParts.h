#pragma once

#include "ai/routing/PrivateCloud.h"
#include "app/CommandLine.h"
#include "async/TaskHandle.h"

#include <functional>
#include <memory>

namespace morvane {

class AppNetwork;
class Clock;
class ProofLedger;
class ProofWatch;
class ServiceIdentity;
class VeniceAttestationService;
class VeniceMeasurementLists;
class Work;
struct Secrets;
struct Storage;

// The private cloud as the deployment knows it: its servers' proofs, the lists that these are judged by, and
// the provider that seals. In a build that knows no address nothing of it is made, and the router has no
// provider to give.
struct PrivateCloudParts {
    // All of it outlives the parts.
    struct Services {
        Storage &storage;
        const Secrets &secrets;
        AppNetwork &network;
        ProofLedger &proofs;
        ServiceIdentity &identity;
        Clock &clock;
        Work &work;
    };

    PrivateCloudParts(const CommandLine &commandLine, const Services &services);
    ~PrivateCloudParts();

    // Which list of accepted servers is in force, as a sentence; absent where nothing is made. Until what was
    // stored has been read, which begins when it is first asked, that is the list of the build.
    [[nodiscard]] std::function<QString()> acceptedListText();

    // For the router, which these parts outlive.
    PrivateCloud cloud;

    const std::unique_ptr<ProofWatch> watch;
    std::unique_ptr<VeniceMeasurementLists> lists;         // null where nothing is made
    std::unique_ptr<VeniceAttestationService> attestation; // likewise

private:
    void readLists();

    std::optional<TaskHandle> m_reading; // nothing before the first time
};

} // namespace morvane
