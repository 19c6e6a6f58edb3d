#pragma once

#include "ai/nearby/NetworkComputerBrowser.h"

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>

#include <vector>

namespace morvane {

// The computers that a sweep shows, by the roles "name" and "hostname".
class ComputerListModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")

public:
    enum Role { NameRole = Qt::UserRole, HostnameRole };

    using QAbstractListModel::QAbstractListModel;

    // Rows that stay keep their place on the screen and the keyboard's.
    void show(const std::vector<NetworkComputerBrowser::Computer> &computers);

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

private:
    std::vector<NetworkComputerBrowser::Computer> m_computers;
};

} // namespace morvane
