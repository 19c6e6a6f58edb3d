#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace morvane {

class AIRequestRouter;

// Settings > AI: whether the private cloud can be used, why it is off when it is, and the way back.
class PrivateCloudViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    // Why it can't be used, as a sentence; empty when it can.
    Q_PROPERTY(QString problem READ problem NOTIFY changed)
    // Why it is off although it is wanted; empty when it isn't.
    Q_PROPERTY(QString notice READ notice NOTIFY changed)
    Q_PROPERTY(bool canTryAgain READ canTryAgain NOTIFY changed)

public:
    // `router` outlives this object.
    explicit PrivateCloudViewModel(AIRequestRouter &router, QObject *parent = nullptr);

    [[nodiscard]] QString problem() const;
    [[nodiscard]] QString notice() const;
    [[nodiscard]] bool canTryAgain() const;
    // The next message asks for a new proof.
    Q_INVOKABLE void tryAgain();

Q_SIGNALS:
    void changed();

private:
    AIRequestRouter &m_router;
};

} // namespace morvane
