#pragma once

#include "PretendRegistry.h"

#include <QStringList>

namespace morvane {

// The models of a practice runtime below one folder: blobs/ holds layers by their digest, one that isn't
// whole with "-partial" behind it, and manifests/ a file for each model that lists its layers.
//
// What the disk refuses is a runtime_error in the words of such a runtime.
class ModelStore {
public:
    struct Model {
        QString name;
        qint64 size = 0; // bytes
        QString digest;  // of the manifest
    };

    explicit ModelStore(QString folder);

    [[nodiscard]] std::vector<Model> models() const;

    // How much of the layer is there.
    [[nodiscard]] qint64 has(const PretendRegistry::Layer &layer) const;

    // Goes on where has() said.
    void append(const PretendRegistry::Layer &layer, const QByteArray &bytes) const;

    // Takes the layer for whole when its bytes have its digest, and else throws it away and throws.
    void verify(const PretendRegistry::Layer &layer) const;

    void writeManifest(const QString &model, const std::vector<PretendRegistry::Layer> &layers) const;

    // Its layers go with it where no other model has them. False when it isn't there.
    [[nodiscard]] bool remove(const QString &model) const;

private:
    [[nodiscard]] QString blob(const QString &digest) const;
    [[nodiscard]] QString manifest(const QString &model) const;
    [[nodiscard]] QStringList layersOf(const QString &manifest) const;
    void makeFolders() const;

    QString m_folder;
};

} // namespace morvane
