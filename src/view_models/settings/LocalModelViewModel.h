#pragma once

#include "ai/local/LocalModelService.h"
#include "async/TaskHandle.h"
#include "view_models/settings/LocalModelListModel.h"

#include <QCoroTask>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QtQml/qqmlregistration.h>

#include <chrono>
#include <memory>
#include <optional>

namespace morvane {

class Alarm;
class SettingsStore;

// Settings > AI > On this computer, and the first step of the welcome: the local model as it is, and what a
// person may have done with it.
class LocalModelViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(State state READ state NOTIFY changed)
    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(QString explanation READ explanation NOTIFY progressChanged)
    Q_PROPERTY(double progress READ progress NOTIFY progressChanged) // 0 to 1; below 0 where it isn't known
    Q_PROPERTY(bool isBusy READ isBusy NOTIFY changed)
    Q_PROPERTY(bool isFetching READ isFetching NOTIFY changed) // of all that is busy, what shows figures
    Q_PROPERTY(bool canStop READ canStop NOTIFY changed)
    Q_PROPERTY(bool canStart READ canStart NOTIFY changed)
    Q_PROPERTY(QString restartWord READ restartWord NOTIFY changed)
    Q_PROPERTY(morvane::LocalModelListModel *models READ models CONSTANT)
    Q_PROPERTY(bool isAnswering READ isAnswering NOTIFY changed)
    // What a press would fetch, while that waits for a yes; empty otherwise.
    Q_PROPERTY(QString question READ question NOTIFY questionChanged)
    Q_PROPERTY(bool isPlanning READ isPlanning NOTIFY questionChanged)
    Q_PROPERTY(QString problem READ problem NOTIFY questionChanged) // why a press can't help; empty for none
    // Nothing that could be checked is published for this machine: the person installs a runtime by this.
    Q_PROPERTY(QString installCommand READ installCommand NOTIFY questionChanged)
    Q_PROPERTY(QString warning READ warning NOTIFY changed) // of a changed model; empty for none
    Q_PROPERTY(QString fingerprints READ fingerprints NOTIFY changed)
    Q_PROPERTY(bool offersVision READ offersVision NOTIFY changed)
    Q_PROPERTY(bool canFetchVision READ canFetchVision NOTIFY changed)
    Q_PROPERTY(QString vision READ vision NOTIFY changed)
    Q_PROPERTY(QString failure READ failure NOTIFY failureChanged) // of a deletion; empty for none
    Q_PROPERTY(QString log READ log NOTIFY logChanged)             // the end of it, once it was asked for

public:
    enum class State { notSetUp, stopped, working, ready, failed };
    Q_ENUM(State)

    // How often a runtime is looked for that the person is installing.
    static constexpr std::chrono::seconds betweenLooks{3};

    // All outlive this object.
    LocalModelViewModel(LocalModelService &service, SettingsStore &settings, Clock &clock, Work &work,
                        QObject *parent = nullptr);
    ~LocalModelViewModel() override;

    [[nodiscard]] State state() const;
    [[nodiscard]] QString title() const;
    [[nodiscard]] QString explanation() const;
    [[nodiscard]] double progress() const;
    [[nodiscard]] bool isBusy() const { return m_service.isBusy(); }
    [[nodiscard]] bool isFetching() const;
    [[nodiscard]] bool canStop() const { return m_service.ownsServer() && !isBusy(); }
    [[nodiscard]] bool canStart() const;
    [[nodiscard]] QString restartWord() const;
    [[nodiscard]] LocalModelListModel *models() { return &m_models; }
    [[nodiscard]] bool isAnswering() const { return m_service.isAnswering(); }
    [[nodiscard]] const QString &question() const { return m_question; }
    [[nodiscard]] bool isPlanning() const { return m_planning.isRunning(); }
    [[nodiscard]] const QString &problem() const { return m_problem; }
    [[nodiscard]] QString installCommand() const;
    [[nodiscard]] QString warning() const { return m_service.integrityWarning(); }
    [[nodiscard]] QString fingerprints() const;
    [[nodiscard]] bool offersVision() const;
    [[nodiscard]] bool canFetchVision() const;
    [[nodiscard]] QString vision() const;
    [[nodiscard]] const QString &failure() const { return m_failure; }
    [[nodiscard]] const QString &log() const { return m_logText; }

    Q_INVOKABLE void look(); // when the page opens; asks nobody while replies come from elsewhere
    // The one press: works out what it would fetch and asks, or begins where there is nothing to fetch.
    Q_INVOKABLE void setUp();
    Q_INVOKABLE void answer(bool yes);
    // Looks for a runtime until there is one or the page is left.
    Q_INVOKABLE void watch();
    Q_INVOKABLE void leave();
    Q_INVOKABLE void cancel() { m_service.cancel(); }
    Q_INVOKABLE void pull(const QString &model) { m_service.pull(model); }
    Q_INVOKABLE void remove(const QString &model);
    Q_INVOKABLE void use(const QString &model) { m_service.use(model); }
    Q_INVOKABLE void stop() { m_service.stop(); }
    Q_INVOKABLE void restart() { m_service.restart(); }
    Q_INVOKABLE void acceptFingerprints() { m_service.acceptFingerprints(); }
    Q_INVOKABLE void fetchVision() { m_service.installVisionSidecar(); }
    Q_INVOKABLE void readLog();

Q_SIGNALS:
    void changed();
    void progressChanged();
    void questionChanged();
    void failureChanged();
    void logChanged();

private:
    static QCoro::Task<> plan(QPointer<LocalModelViewModel> self, std::stop_token stop);
    static QCoro::Task<> readLogFile(QPointer<LocalModelViewModel> self, std::stop_token stop);
    void take(const SetupPlan &plan);
    void follow();
    void setFailure(const QString &failure);

    LocalModelService &m_service;
    SettingsStore &m_settings;
    Clock &m_clock;
    Work &m_work;
    LocalModelListModel m_models;
    QString m_question;
    QString m_problem;
    bool m_isUnavailable = false;
    QString m_failure;
    QString m_logText;
    TaskHandle m_planning;
    TaskHandle m_reading;
    std::unique_ptr<Alarm> m_nextLook; // while a runtime is watched for
};

} // namespace morvane
