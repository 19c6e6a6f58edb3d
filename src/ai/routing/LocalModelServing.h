#pragma once

#include <QObject>
#include <QString>

namespace morvane {

// The model runtime that the application keeps on this machine. GUI thread.
class LocalModelServing : public QObject {
    Q_OBJECT
public:
    enum class State {
        absent,     // nothing is set up, or it isn't known yet
        installing, // the runtime or its model is on its way
        starting,
        ready,
        failed,
    };

    using QObject::QObject;

    [[nodiscard]] virtual State state() const = 0;

    // The installed model; empty unless ready.
    [[nodiscard]] virtual QString model() const = 0;

    // The base address of its chat completions.
    [[nodiscard]] virtual QString baseURL() const { return QStringLiteral("http://localhost:11434/v1"); }

    // Ends it where it is ours and starts it again; restarted() tells how that went.
    virtual void restart() {}

Q_SIGNALS:
    void changed(); // the state, or the models that are installed
    void restarted(bool good);
};

} // namespace morvane
