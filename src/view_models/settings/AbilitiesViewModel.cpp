#include "view_models/settings/AbilitiesViewModel.h"

#include "ai/tools/AbilityCatalogue.h"
#include "ai/tools/ToolRegistry.h"
#include "persistence/SettingsStore.h"

namespace morvane {

AbilitiesViewModel::AbilitiesViewModel(SettingsStore &settings, ToolRegistry &tools, QObject *parent)
    : QAbstractListModel(parent)
    , m_tools(tools)
{
    for (const auto changed :
         {&SettingsStore::abilitiesEnabledChanged, &SettingsStore::memoryEnabledChanged,
          &SettingsStore::webAccessEnabledChanged, &SettingsStore::screenAwarenessEnabledChanged,
          &SettingsStore::desktopActionsEnabledChanged})
        connect(&settings, changed, this, &AbilitiesViewModel::availabilityChanged);
    connect(&tools, &ToolRegistry::availabilityChanged, this, &AbilitiesViewModel::availabilityChanged);
}

void AbilitiesViewModel::availabilityChanged()
{
    Q_EMIT dataChanged(index(0), index(rowCount() - 1), {ReasonRole, HintRole});
}

int AbilitiesViewModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(AbilityCatalogue::all().size());
}

QHash<int, QByteArray> AbilitiesViewModel::roleNames() const
{
    return {{NameRole, "name"}, {DescriptionRole, "description"}, {ReasonRole, "reason"}, {HintRole, "hint"}};
}

QVariant AbilitiesViewModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const AITool &tool = AbilityCatalogue::all()[static_cast<std::size_t>(index.row())];
    switch (role) {
    case NameRole:
        return tool.displayName;
    case DescriptionRole:
        return tool.userDescription;
    case ReasonRole:
        return m_tools.unavailableReason(tool.name).value_or(QString());
    case HintRole:
        return m_tools.relaunchHint(tool.name).value_or(QString());
    default:
        return {};
    }
}

} // namespace morvane
