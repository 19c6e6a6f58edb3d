#pragma once

#include "async/TaskHandle.h"

#include <QCoroTask>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QStringListModel>
#include <QtQml/qqmlregistration.h>

#include <functional>
#include <stop_token>

namespace morvane {

// The models of the server that the settings name, fetched when the person wants to pick one. GUI thread.
class ServerModelsViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    // Those of the names that hold each word of the filter, as the role "display".
    Q_PROPERTY(QAbstractItemModel *found READ found CONSTANT)
    Q_PROPERTY(QString filter READ filter WRITE setFilter NOTIFY filterChanged)
    Q_PROPERTY(int count READ count NOTIFY changed) // of all, whatever the filter
    Q_PROPERTY(bool isFetching READ isFetching NOTIFY changed)
    Q_PROPERTY(QString problem READ problem NOTIFY changed) // why there are none; empty for none

public:
    // Throws what a provider throws.
    using Lister = std::function<QCoro::Task<QStringList>(std::stop_token stop)>;

    explicit ServerModelsViewModel(Lister lister, QObject *parent = nullptr);

    [[nodiscard]] QAbstractItemModel *found() { return &m_found; }
    [[nodiscard]] const QString &filter() const { return m_filter; }
    void setFilter(const QString &filter);
    [[nodiscard]] int count() const { return static_cast<int>(m_names.size()); }
    Q_INVOKABLE QString nameAt(int row) const;        // of those found; empty for no such row
    Q_INVOKABLE int rowOf(const QString &name) const; // -1 when it isn't found
    [[nodiscard]] bool isFetching() const { return m_isFetching; }
    [[nodiscard]] const QString &problem() const { return m_problem; }

    // Asks the server anew; what it said before stays until it has answered.
    Q_INVOKABLE void fetch();
    // Another server: what the former one said is gone, and a question under way with it.
    void forget();

Q_SIGNALS:
    void changed();
    void filterChanged();

private:
    static QCoro::Task<> fetchNames(QPointer<ServerModelsViewModel> self, std::stop_token stop);
    void finish(const QStringList &names, const QString &problem);

    Lister m_lister;
    void find();

    QStringList m_names;
    QStringListModel m_found;
    QString m_filter;
    QString m_problem;
    bool m_isFetching = false;
    TaskHandle m_fetch;
};

} // namespace morvane
