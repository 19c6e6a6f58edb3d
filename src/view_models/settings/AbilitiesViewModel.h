#pragma once

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>

namespace morvane {

class SettingsStore;
class ToolRegistry;

// Settings > Abilities: each ability with what it does and why it is off. GUI thread.
class AbilitiesViewModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")

public:
    enum Role {
        NameRole = Qt::UserRole + 1, // as people read it
        DescriptionRole,
        ReasonRole, // why it is off; empty when it is on
        HintRole,   // what has to be done before it works; empty for nothing
    };

    // Both outlive this object.
    AbilitiesViewModel(SettingsStore &settings, ToolRegistry &tools, QObject *parent = nullptr);

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

private:
    void availabilityChanged();

    ToolRegistry &m_tools;
};

} // namespace morvane
