#pragma once

#include "ai/local/LocalMachine.h"
#include "ai/local/LocalRuntimeValues.h"
#include "ai/local/LocalServer.h"
#include "ai/local/ModelDigestPins.h"
#include "ai/local/RuntimeInstallation.h"
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

    // Acts as though nothing were installed and nobody answered, until it has installed something itself.
    void simulateFreshSetup() { m_simulateFreshSetup = true; }

    // As the settings name it.
    [[nodiscard]] static QString providerName();

    // What the window shows. changed() tells of the phase and the models, progressChanged() of the figures
    // (at most ten times a second), detailChanged() of the rest.
    [[nodiscard]] const Phase &phase() const { return m_phase; }
    [[nodiscard]] const TransferFigures &figures() const { return m_figures; }
    [[nodiscard]] const QString &integrityWarning() const { return m_integrityWarning; } // empty for none
    // What the warning is about.
    [[nodiscard]] const std::vector<ModelDigestPins::Change> &fingerprintChanges() const
    {
        return m_fingerprintChanges;
    }
    [[nodiscard]] const VisionSidecarState &visionSidecar() const { return m_visionSidecar; }
    // What the server lists, by name; empty while none answers.
    [[nodiscard]] const std::vector<ServerModel> &models() const { return m_models; }
    // Bytes of memory that the loaded models take, as the server tells; nothing when it doesn't.
    [[nodiscard]] std::optional<std::uint64_t> memoryInUse() const { return m_memoryInUse; }
    // Whether the server is the runtime that this service started, and can so be stopped and started again.
    [[nodiscard]] bool ownsServer() const;
    // Whether the settings point at this server as this service set it up; it may be stopped.
    [[nodiscard]] bool isSetUp() const;
    [[nodiscard]] bool isAnswering() const { return m_isAnswering; } // as it was last seen
    [[nodiscard]] bool isBusy() const { return m_isBusy; }           // a setup, a pull, a start or the like
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

    // Looks every few seconds whether the person has installed a runtime or started a server meanwhile, until
    // one is there: runtimeAppeared() tells, once.
    void watchForRuntime(bool watches);

    // Works out what setUp() would fetch; nothing is fetched for it. Only the server's own list is asked for.
    [[nodiscard]] QCoro::Task<SetupPlan> plan(std::stop_token stop);

    // The one press. Goes on from where a former one stopped. Nothing happens while isBusy().
    void setUp();

    // Stops what is under way; what was fetched stays, for the next press.
    void cancel();

    // Fetches a model and then uses it, with the runtime started for it where need be. Beside a model that
    // answers a failure comes by failed(), and that model stays.
    void pull(const QString &model);
    // Deletes it from the server; its fingerprint is forgotten. What it failed with comes by failed().
    void remove(const QString &model);
    // Uses a model that the server has.
    void use(const QString &model);

    // Ends our runtime, and what is under way; a server that isn't ours stays. The phase is `unknown` then.
    void stop();
    // A server that answers and isn't ours is left as it is, and counts as good.
    void restart() override;

    // Takes the changed fingerprints for the right ones, and the warning away.
    void acceptFingerprints();

    void installVisionSidecar();
    void setOnVisionSidecarInstalled(std::function<void()> installed);

    // What makes a runtime that we installed ours, for the time in which the key changes.
    [[nodiscard]] std::optional<QByteArray> runtimeRecord() const { return m_installation.record(); }
    void keepRuntimeRecord(const QByteArray &record) const { m_installation.keepRecord(record); }

    // Ends tasks and the runtime at once, when the program ends.
    void end();

Q_SIGNALS:
    void progressChanged();
    void detailChanged();
    void runtimeAppeared();
    // What was asked for failed and changed nothing: one sentence for the person.
    void failed(const QString &sentence);

private:
    using Models = std::optional<std::vector<ServerModel>>;
    enum class Checking { strict, lenient }; // what a runtime that fails its check is: an error, or not there
    struct Launch {
        QString program;
        bool isOurs = false; // we installed it
    };

    // Tasks. Those of setting up are in LocalModelSetup.cpp.
    QCoro::Task<> runSetUp(std::stop_token stop);
    QCoro::Task<> runPull(QString model, std::stop_token stop);
    QCoro::Task<> runRemoval(QString model, std::stop_token stop);
    QCoro::Task<> runStop(std::stop_token stop);
    QCoro::Task<> runRestart(std::stop_token stop);
    QCoro::Task<> runPreparation(std::stop_token stop);
    QCoro::Task<> runRefresh(std::stop_token stop);
    QCoro::Task<> runVisionSidecar(std::stop_token stop);
    QCoro::Task<> runWatch(std::stop_token stop);

    QCoro::Task<> knowMemory(std::stop_token stop);
    QCoro::Task<Models> askModels(std::stop_token stop);
    QCoro::Task<QString> chooseModel(std::stop_token stop);
    QCoro::Task<> ensureServer(std::stop_token stop);
    QCoro::Task<> ensureRuntime(std::stop_token stop);
    QCoro::Task<std::optional<Launch>> installedRuntime(Checking checking, std::stop_token stop);
    QCoro::Task<Launch> downloadRuntime(std::stop_token stop);
    QCoro::Task<> startRuntime(Launch launch, std::stop_token stop);
    QCoro::Task<> awaitServer(std::stop_token stop);
    QCoro::Task<> checkListeners(std::stop_token stop);
    QCoro::Task<> endRuntime(std::stop_token stop);
    QCoro::Task<> pullModel(QString model, std::stop_token stop);
    QCoro::Task<> takeUp(QString model, std::stop_token stop);

    [[nodiscard]] LocalServer server() const;
    [[nodiscard]] QString foundRuntime() const; // empty for none
    [[nodiscard]] bool hasManagedRuntime() const;
    [[nodiscard]] bool usesAMD() const;
    [[nodiscard]] bool has(const QString &model) const;
    [[nodiscard]] bool isChosenHere() const; // the settings name this server and a model
    void runtimeEnded();
    using Task = std::function<QCoro::Task<>(std::stop_token)>;
    void start(Task task);
    QCoro::Task<> run(Task task, std::stop_token stop);
    void setBusy(bool isBusy);
    void setPhase(Phase phase);
    void settle();
    void fail(const std::exception_ptr &error);
    QString noteFailure(const std::exception_ptr &error);
    void noteProgress(Phase::Kind kind, const QString &model, qint64 done, std::optional<qint64> total,
                      std::optional<int> percent);
    void noteFigures(qint64 done, std::optional<qint64> total);
    void setModels(Models models);
    void compareFingerprints();
    void judgeVisionSidecar();
    void setVisionSidecar(VisionSidecarState state);

    const Services m_services;
    const LocalRuntimeValues m_values;
    bool m_simulateFreshSetup = false;
    const std::shared_ptr<SetupLog> m_log;
    RuntimeInstallation m_installation;
    ModelDigestPins m_pins;
    std::unique_ptr<RuntimeProcess> m_process;
    Phase m_phase;
    QString m_readyModel; // the one to go back to when a pull is stopped; empty for none
    TransferMeter m_meter;
    TransferFigures m_figures;
    std::chrono::milliseconds m_lastProgress{0};
    QString m_integrityWarning;
    std::vector<ModelDigestPins::Change> m_fingerprintChanges;
    VisionSidecarState m_visionSidecar;
    std::vector<ServerModel> m_models;
    bool m_isAnswering = false;
    std::optional<std::uint64_t> m_memoryInUse;
    std::optional<LocalMachine::Memory> m_memory; // of the machine, once it was asked
    std::function<void()> m_onVisionSidecarInstalled;
    bool m_isBusy = false;
    TaskHandle m_task;
    TaskHandle m_refresh;
    TaskHandle m_watch;
    Lifeline m_lifeline;
};

} // namespace morvane
