#pragma once

#include <QJsonObject>
#include <QString>

#include <optional>
#include <vector>

namespace morvane {

// A model as the local server lists it.
struct ServerModel {
    QString name;
    QString digest;              // empty where the server names none
    std::optional<qint64> bytes; // on the disk

    bool operator==(const ServerModel &) const = default;

    // Those of an answer to "/api/tags", by name. Entries without a name are left out.
    [[nodiscard]] static std::vector<ServerModel> listed(const QJsonObject &answer);
};

} // namespace morvane
