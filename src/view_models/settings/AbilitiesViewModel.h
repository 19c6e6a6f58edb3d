#pragma once

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>

namespace morvane {

class SettingsStore;
class ToolRegistry;

// Settings > Abilities: the switches, and each ability with what it does and why it is off. GUI thread.
class AbilitiesViewModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(bool enabled READ isEnabled WRITE setEnabled NOTIFY switchesChanged) // all of them
    Q_PROPERTY(bool memory READ usesMemory WRITE setMemory NOTIFY switchesChanged)
    Q_PROPERTY(bool web READ usesWeb WRITE setWeb NOTIFY switchesChanged)
    Q_PROPERTY(bool screen READ readsScreen WRITE setScreen NOTIFY switchesChanged)
    Q_PROPERTY(bool desktop READ actsOnDesktop WRITE setDesktop NOTIFY switchesChanged)

public:
    enum Role {
        NameRole = Qt::UserRole + 1, // as people read it
        DescriptionRole,
        ReasonRole, // why it is off; empty when it is on
        HintRole,   // what has to be done before it works; empty for nothing
    };

    // Both outlive this object.
    AbilitiesViewModel(SettingsStore &settings, ToolRegistry &tools, QObject *parent = nullptr);

    [[nodiscard]] bool isEnabled() const;
    void setEnabled(bool enabled);
    [[nodiscard]] bool usesMemory() const;
    void setMemory(bool on);
    [[nodiscard]] bool usesWeb() const;
    void setWeb(bool on);
    [[nodiscard]] bool readsScreen() const;
    void setScreen(bool on);
    [[nodiscard]] bool actsOnDesktop() const;
    void setDesktop(bool on);

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void switchesChanged();

private:
    void availabilityChanged();

    SettingsStore &m_settings;
    ToolRegistry &m_tools;
};

} // namespace morvane
