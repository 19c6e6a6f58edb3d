#pragma once

#include "ai/local/ServerModel.h"

#include <QMap>
#include <QString>

#include <vector>

namespace morvane {

// The digest of every local model as it was first seen, so that a later change of what lies under a name can
// be told. It detects changes and proves no origin. One file, written as a whole after each change.
class ModelDigestPins {
public:
    struct Change {
        QString model;
        QString pinned;
        QString found;

        bool operator==(const Change &) const = default;
    };

    // A file that is missing or can't be read has no pins.
    explicit ModelDigestPins(QString path);

    // Pins what is new, and tells what differs from its pin, which stays as it is.
    [[nodiscard]] std::vector<Change> compare(const std::vector<ServerModel> &models);

    // From now on this is the model's digest.
    void accept(const Change &change);

    // The next sight of it is the first.
    void forget(const QString &model);

    [[nodiscard]] const QMap<QString, QString> &digests() const { return m_digests; }

private:
    void save() const;

    QString m_path;
    QMap<QString, QString> m_digests; // by the model's name
};

} // namespace morvane
