#pragma once

#include "ai/local/ServerModel.h"

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>

#include <vector>

namespace morvane {

// The models that the local server has, by the roles "name", "size" (for people; empty where it isn't known)
// and "inUse".
class LocalModelListModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")

public:
    enum Role { NameRole = Qt::UserRole, SizeRole, InUseRole };

    using QAbstractListModel::QAbstractListModel;

    void show(const std::vector<ServerModel> &models, const QString &inUse);

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

private:
    std::vector<ServerModel> m_models;
    QString m_inUse;
};

} // namespace morvane
