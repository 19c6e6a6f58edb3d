#pragma once

#include "async/TaskHandle.h"

#include <QCoroTask>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

#include <functional>
#include <stop_token>

namespace morvane {

// The models of the server that the settings name, fetched when the person wants to pick one. GUI thread.
class ServerModelsViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(QStringList names READ names NOTIFY changed)
    Q_PROPERTY(bool isFetching READ isFetching NOTIFY changed)
    Q_PROPERTY(QString problem READ problem NOTIFY changed) // why there are none; empty for none

public:
    // Throws what a provider throws.
    using Lister = std::function<QCoro::Task<QStringList>(std::stop_token stop)>;

    explicit ServerModelsViewModel(Lister lister, QObject *parent = nullptr);

    [[nodiscard]] const QStringList &names() const { return m_names; }
    [[nodiscard]] bool isFetching() const { return m_isFetching; }
    [[nodiscard]] const QString &problem() const { return m_problem; }

    // Asks the server anew; what it said before stays until it has answered.
    Q_INVOKABLE void fetch();
    // Another server: what the former one said is gone, and a question under way with it.
    void forget();

Q_SIGNALS:
    void changed();

private:
    static QCoro::Task<> fetchNames(QPointer<ServerModelsViewModel> self, std::stop_token stop);
    void finish(const QStringList &names, const QString &problem);

    Lister m_lister;
    QStringList m_names;
    QString m_problem;
    bool m_isFetching = false;
    TaskHandle m_fetch;
};

} // namespace morvane
