#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace morvane {

class SystemPromptStore;

// Settings > Instructions: the person's own standing instructions. GUI thread.
class InstructionsViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY textChanged)
    Q_PROPERTY(QString defaultText READ defaultText CONSTANT)      // in use while `text` is blank
    Q_PROPERTY(QString problem READ problem NOTIFY problemChanged) // empty for none

public:
    // `store` outlives this object.
    explicit InstructionsViewModel(SystemPromptStore &store, QObject *parent = nullptr);

    [[nodiscard]] QString text() const;
    // Saves at once.
    void setText(const QString &text);
    [[nodiscard]] static QString defaultText();
    [[nodiscard]] QString problem() const;

    // Back to none; gives up instructions that can't be opened.
    Q_INVOKABLE void reset();

Q_SIGNALS:
    void textChanged();
    void problemChanged();

private:
    SystemPromptStore &m_store;
};

} // namespace morvane
