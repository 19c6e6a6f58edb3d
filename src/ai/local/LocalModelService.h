#pragma once

#include "ai/local/LocalMachine.h"
#include "ai/local/LocalRuntimeValues.h"
#include "ai/local/ModelDigestPins.h"
#include "ai/local/ServerModel.h"
#include "ai/local/SetupLog.h"
#include "ai/local/SetupPlan.h"
#include "ai/local/TransferFigures.h"
#include "ai/routing/LocalModelServing.h"
#include "async/Lifeline.h"
#include "async/TaskHandle.h"

#include <QCoroTask>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace morvane {

class Clock;
class HttpSessionProviding;
class LocalDataVault;
class LocalServer;
class RuntimeProcess;
class SettingsStore;
class Work;

// Makes a model run on this machine with one press: finds or installs a runtime, proves that an installed one
// is what it meant to install, starts it, pulls a model that suits the machine, and tells how far it is.
//
// A server that already answers is used as it is, and never stopped. A runtime of ours ends with this object.
// GUI thread.
class LocalModelService : public LocalModelServing {
    Q_OBJECT
public:
    struct Phase {
        enum class Kind {
            unknown, // not looked yet
            notSetUp,
            downloadingRuntime,
            startingRuntime,
            downloadingModel,
            ready,
            failed,
        };
        Kind kind = Kind::unknown;
        std::optional<int> percent; // of a download, when it is known
        QString text;               // the model of `ready` and of its download, the words of `failed`

        bool operator==(const Phase &) const = default;
    };

    struct VisionSidecarState {
        enum class Kind { notOffered, available, downloading, installed, failed };
        Kind kind = Kind::notOffered;
        QString text; // the words of `failed`

        bool operator==(const VisionSidecarState &) const = default;
    };

    // All that is referred to outlives the service.
    struct Services {
        SettingsStore &settings;
        HttpSessionProviding &network;
        LocalDataVault &vault;
        const LocalMachine &machine;
        Clock &clock;
        Work &work;
    };

    LocalModelService(const Services &services, LocalRuntimeValues values, QObject *parent = nullptr);
    ~LocalModelService() override;

    // Acts as though nothing is installed and nobody answers.
    void simulateFreshSetup() { m_simulateFreshSetup = true; }

    // What the window shows. changed() tells of the phase and the models, progressChanged() of the figures
    // (at most ten times a second), detailChanged() of the rest.
    [[nodiscard]] const Phase &phase() const { return m_phase; }
    [[nodiscard]] const TransferFigures &figures() const { return m_figures; }
    [[nodiscard]] const QString &integrityWarning() const { return m_integrityWarning; } // empty for none
    [[nodiscard]] const VisionSidecarState &visionSidecar() const { return m_visionSidecar; }
    // What the server lists, by name; empty while none answers.
    [[nodiscard]] const std::vector<ServerModel> &models() const { return m_models; }
    // Bytes of memory that the loaded models take, as the server tells; nothing when it doesn't.
    [[nodiscard]] std::optional<std::uint64_t> memoryInUse() const { return m_memoryInUse; }
    // Whether the server is the runtime that this service started, and can so be stopped and started again.
    [[nodiscard]] bool ownsServer() const;
    [[nodiscard]] bool isBusy() const
    {
        return m_task.isRunning();
    } // a setup, a pull or a start is under way
    [[nodiscard]] QString setupLogPath() const { return m_values.setupLog(); }
    [[nodiscard]] const LocalRuntimeValues &values() const { return m_values; }

    // LocalModelServing
    [[nodiscard]] State state() const override;
    [[nodiscard]] QString model() const override;
    [[nodiscard]] QString baseURL() const override;

    // Looks what is there, and starts a runtime of ours when the settings point at it. Fetches nothing.
    void prepare();

    // Looks whether somebody answers now, and what models there are.
    void refresh();

    // Works out what setUp() would fetch; nothing is fetched for it. Only the server's own list is asked for.
    [[nodiscard]] QCoro::Task<SetupPlan> plan(std::stop_token stop);

    // The one press. Goes on from where a former one stopped. Nothing happens while isBusy().
    void setUp();

    // Stops what is under way; what was fetched stays, for the next press.
    void cancel();

    // Fetches a model and then uses it. Nothing happens while isBusy() or without a server.
    void pull(const QString &model);
    // Deletes it from the server; its fingerprint is forgotten. Words that it failed with come by `failed`.
    void remove(const QString &model);
    // Uses a model that the server has.
    void use(const QString &model);

    // Ends our runtime; a server that isn't ours stays.
    void stop();
    // Ends our runtime if there is one and starts it again; restarted() tells how that went.
    void restart();

    // Takes the changed fingerprints for the right ones, and the warning away.
    void acceptFingerprints();

    void installVisionSidecar();
    void setOnVisionSidecarInstalled(std::function<void()> installed);

    // Ends tasks and the runtime at once, when the program ends.
    void end();

Q_SIGNALS:
    void progressChanged();
    void detailChanged();
    void restarted(bool good);
    void failed(const QString &sentence); // of remove(): one sentence for the person

private:
    friend class LocalSetup;

    const Services m_services;
    const LocalRuntimeValues m_values;
    bool m_simulateFreshSetup = false;
    Phase m_phase;
    TransferFigures m_figures;
    QString m_integrityWarning;
    VisionSidecarState m_visionSidecar;
    std::vector<ServerModel> m_models;
    std::optional<std::uint64_t> m_memoryInUse;
    std::function<void()> m_onVisionSidecarInstalled;
    TaskHandle m_task;
    Lifeline m_lifeline;
};

} // namespace morvane
