#pragma once

#include "services/GlobalShortcutBinding.h"

#include <QObject>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

namespace morvane {

class GlobalShortcutService;

// One of the keys that work wherever the keyboard is: what is chosen, what the desktop really bound, and the
// recording of another. GUI thread.
class GlobalShortcutViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    // What the settings say, which also works in the window itself; empty for none.
    Q_PROPERTY(QString chosen READ chosen NOTIFY changed)
    Q_PROPERTY(QString bound READ bound NOTIFY changed) // empty for none
    Q_PROPERTY(QString note READ note NOTIFY changed)   // why nothing, or something else, is bound; or empty
    Q_PROPERTY(bool isChosenByDesktop READ isChosenByDesktop CONSTANT)
    Q_PROPERTY(bool canShowDesktopSettings READ canShowDesktopSettings NOTIFY changed)
    Q_PROPERTY(bool isRecording READ isRecording NOTIFY changed)
    Q_PROPERTY(QStringList presets READ presets CONSTANT) // the last one is no key

public:
    // `service` outlives this object. `desktop` is the desktop's own name; empty for unknown.
    GlobalShortcutViewModel(GlobalShortcut shortcut, GlobalShortcutService &service, QString desktop,
                            QObject *parent = nullptr);

    [[nodiscard]] QString chosen() const;
    [[nodiscard]] QString bound() const;
    [[nodiscard]] QString note() const;
    [[nodiscard]] bool isChosenByDesktop() const;
    [[nodiscard]] bool canShowDesktopSettings() const;
    [[nodiscard]] bool isRecording() const { return m_isRecording; }
    [[nodiscard]] QStringList presets() const;

    Q_INVOKABLE void choosePreset(int index);
    Q_INVOKABLE void showDesktopSettings();

    Q_INVOKABLE void record();
    Q_INVOKABLE void stopRecording();
    // What was pressed while recording, as Qt names it. Esc ends it, Backspace chooses no key, and what can't
    // be a key for the whole desktop is refused in the note. A modifier alone is waited for.
    Q_INVOKABLE void press(int key, int modifiers);

Q_SIGNALS:
    void changed();

private:
    [[nodiscard]] QString problem() const;
    [[nodiscard]] QString why(GlobalShortcutBinding::State state) const;
    void refuse(const QString &why);

    const GlobalShortcut m_shortcut;
    GlobalShortcutService &m_service;
    const QString m_desktop;
    bool m_isRecording = false;
    QString m_refusal; // of the last key that was pressed; empty for none
};

} // namespace morvane
