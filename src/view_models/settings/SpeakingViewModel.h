#pragma once

#include "async/TaskHandle.h"
#include "audio/SpeechSynthesizing.h"

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

namespace morvane {

class SettingsStore;
class TextToSpeechService;

// Settings > Voice, how replies are read: the voices of this machine, and a sentence to judge them by. GUI
// thread.
class SpeakingViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(QStringList voices READ voices NOTIFY changed) // as people read them; empty until refresh()
    Q_PROPERTY(int voice READ voice WRITE setVoice NOTIFY changed) // of the list; the default is the first
    Q_PROPERTY(bool hasMore READ hasMore NOTIFY changed) // voices, of a service that isn't started yet
    Q_PROPERTY(bool isListening READ isListening NOTIFY changed)
    Q_PROPERTY(QString message READ message NOTIFY changed) // why nothing was heard; empty for none

public:
    // Both outlive this object.
    SpeakingViewModel(SettingsStore &settings, TextToSpeechService &speech, QObject *parent = nullptr);

    [[nodiscard]] QStringList voices() const;
    [[nodiscard]] int voice() const;
    void setVoice(int index);
    [[nodiscard]] bool hasMore() const;
    [[nodiscard]] bool isListening() const { return m_listening.isRunning(); }
    [[nodiscard]] const QString &message() const { return m_message; }

    // Asks the machine which voices it has.
    Q_INVOKABLE void refresh();
    // Starts the service that has more of them.
    Q_INVOKABLE void showMore();
    // Speaks a sentence as a reply would be read, or stops it.
    Q_INVOKABLE void listen();
    Q_INVOKABLE void stop();

Q_SIGNALS:
    void changed();

private:
    static QCoro::Task<> ask(QPointer<SpeakingViewModel> self, std::stop_token stop);
    static QCoro::Task<> speak(QPointer<SpeakingViewModel> self, std::stop_token stop);

    SettingsStore &m_settings;
    TextToSpeechService &m_speech;
    std::vector<SpeechSynthesizing::Voice> m_voices;
    bool m_isAskedForMore = false;
    QString m_message;
    TaskHandle m_asking;
    TaskHandle m_listening;
};

} // namespace morvane
