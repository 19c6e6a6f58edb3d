#pragma once

#include <QObject>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

namespace morvane {

class SettingsStore;
class SpeechRecognizing;
class WhisperSetup;

// Settings > Voice, what turns speech into words: which engine is at work on this machine, for which
// languages, and how to get the better one. GUI thread.
class RecognitionViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(QString engine READ engine NOTIFY changed)       // its name
    Q_PROPERTY(QString languages READ languages NOTIFY changed) // a sentence
    Q_PROPERTY(QString advice READ advice NOTIFY changed)       // empty when there is nothing better to have
    Q_PROPERTY(bool isBroken READ isBroken NOTIFY changed)      // what was chosen is not what is at work
    Q_PROPERTY(bool hasChosen READ hasChosen NOTIFY changed)    // a model

public:
    // `packaged` is the engine that came with the program. All outlive this object.
    RecognitionViewModel(SettingsStore &settings, WhisperSetup &setup, const SpeechRecognizing &packaged,
                         QObject *parent = nullptr);

    [[nodiscard]] QString engine() const;
    [[nodiscard]] QString languages() const;
    [[nodiscard]] QString advice() const;
    [[nodiscard]] bool isBroken() const;
    [[nodiscard]] bool hasChosen() const;

    // Looks anew at what this machine has.
    Q_INVOKABLE void refresh();
    Q_INVOKABLE void choose(const QUrl &model);
    Q_INVOKABLE void forget();

Q_SIGNALS:
    void changed();

private:
    SettingsStore &m_settings;
    WhisperSetup &m_setup;
    const SpeechRecognizing &m_packaged;
};

} // namespace morvane
