#pragma once

#include <QByteArrayView>
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

    // Those of a body of "/api/tags", by name. Entries without a name are left out; a body that is no list
    // has none.
    [[nodiscard]] static std::vector<ServerModel> listed(QByteArrayView body);
};

} // namespace morvane
