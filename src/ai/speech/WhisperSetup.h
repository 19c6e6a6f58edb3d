#pragma once

#include "ai/speech/WhisperModel.h"
#include "async/TaskHandle.h"

#include <QLocale>
#include <QObject>
#include <QPointer>

namespace morvane {

class SettingsStore;
class Work;

// Whether this machine has the program and the model that recognise speech better: a `whisper-server` on the
// person's PATH, and the model file that they chose. Looked at beside the GUI thread, where its results live.
class WhisperSetup : public QObject {
    Q_OBJECT
public:
    struct Found {
        QString program;                   // empty: none is installed
        QString modelPath;                 // empty: none was chosen
        std::optional<WhisperModel> model; // nothing: the file is no model, or it is gone
        bool operator==(const Found &) const = default;
    };

    // Both outlive this object.
    WhisperSetup(SettingsStore &settings, Work &work, QObject *parent = nullptr);

    [[nodiscard]] const Found &found() const { return m_found; }
    [[nodiscard]] bool isReady() const { return !m_found.program.isEmpty() && m_found.model.has_value(); }
    [[nodiscard]] bool knows(const QLocale &locale) const;

    // Looks again: the person may have installed or removed something.
    void refresh();

Q_SIGNALS:
    void changed();

private:
    static QCoro::Task<> look(QPointer<WhisperSetup> self, std::stop_token stop);

    SettingsStore &m_settings;
    Work &m_work;
    Found m_found;
    TaskHandle m_looking;
};

} // namespace morvane
