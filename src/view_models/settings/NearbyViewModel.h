#pragma once

#include "ai/nearby/ModelServerBrowser.h"
#include "ai/nearby/NetworkComputerBrowser.h"
#include "view_models/settings/ComputerListModel.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

namespace morvane {

class SettingsStore;

// Settings > AI and the welcome: a computer nearby, the models that it serves, and the one that is taken.
class NearbyViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(morvane::ComputerListModel *computers READ computers CONSTANT)
    Q_PROPERTY(bool isSearching READ isSearching NOTIFY searchChanged)
    // What came of the search, in a sentence; empty while there is something better to look at.
    Q_PROPERTY(QString searchNotice READ searchNotice NOTIFY searchChanged)
    Q_PROPERTY(QStringList apps READ apps CONSTANT) // in the order of App
    Q_PROPERTY(int app READ app WRITE setApp NOTIFY appChanged)
    Q_PROPERTY(QString place READ place WRITE setPlace NOTIFY placeChanged) // as it is typed or was picked
    Q_PROPERTY(bool isAsking READ isAsking NOTIFY answerChanged)
    Q_PROPERTY(QString problem READ problem NOTIFY answerChanged) // empty for none
    Q_PROPERTY(QStringList models READ models NOTIFY answerChanged)
    Q_PROPERTY(QString taken READ taken NOTIFY answerChanged) // what was made of it; empty until then
    // How the other computer is made to answer, while it refuses to.
    Q_PROPERTY(bool needsSteps READ needsSteps NOTIFY answerChanged)
    Q_PROPERTY(QString instruction READ instruction NOTIFY appChanged)
    Q_PROPERTY(QString command READ command NOTIFY appChanged)     // empty for none
    Q_PROPERTY(QString otherwise READ otherwise NOTIFY appChanged) // empty for none
    Q_PROPERTY(QString check READ check NOTIFY appChanged)

public:
    // Both browsers are its own; what they stand on outlives it.
    NearbyViewModel(ServiceBrowsing &services, HttpSessionProviding &network, SettingsStore &settings,
                    Clock &clock, Work &work, QObject *parent = nullptr);

    [[nodiscard]] ComputerListModel *computers() { return &m_computers; }
    [[nodiscard]] bool isSearching() const { return m_browser.isBrowsing(); }
    [[nodiscard]] QString searchNotice() const;
    [[nodiscard]] static QStringList apps();
    [[nodiscard]] int app() const { return static_cast<int>(m_app); }
    void setApp(int app);
    [[nodiscard]] const QString &place() const { return m_place; }
    void setPlace(const QString &place);
    [[nodiscard]] bool isAsking() const;
    [[nodiscard]] QString problem() const;
    [[nodiscard]] QStringList models() const;
    [[nodiscard]] const QString &taken() const { return m_taken; }
    [[nodiscard]] bool needsSteps() const { return m_server.needsNetworkAccessHelp(); }
    [[nodiscard]] QString instruction() const { return ModelServerApps::setupSteps(m_app).instruction; }
    [[nodiscard]] QString command() const { return ModelServerApps::setupSteps(m_app).command; }
    [[nodiscard]] QString otherwise() const { return ModelServerApps::setupSteps(m_app).otherwise; }
    [[nodiscard]] QString check() const { return ModelServerApps::setupSteps(m_app).check; }

    Q_INVOKABLE void search();
    Q_INVOKABLE void leave();       // nobody looks any more
    Q_INVOKABLE void pick(int row); // of the computers; asks it
    Q_INVOKABLE void ask();         // the place that is typed
    // One of the models: replies come from it from now on.
    Q_INVOKABLE void take(const QString &model);

Q_SIGNALS:
    void searchChanged();
    void appChanged();
    void placeChanged();
    void answerChanged();

private:
    void forgetAnswer();

    SettingsStore &m_settings;
    NetworkComputerBrowser m_browser;
    ModelServerBrowser m_server;
    ComputerListModel m_computers;
    bool m_hasSearched = false;
    ModelServerApp m_app = ModelServerApp::ollama;
    QString m_place;
    QString m_taken;
};

} // namespace morvane
