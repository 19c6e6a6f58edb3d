#pragma once

#include "ai/routing/SourceOption.h"

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>

#include <vector>

namespace morvane {

class AIRequestRouter;

// The menu in which the person picks where replies come from, and what is said about the place in use before
// a message leaves. GUI thread.
class SourceMenuViewModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(QString name READ name NOTIFY sourceChanged)               // of the place in use
    Q_PROPERTY(QString destination READ destination NOTIFY sourceChanged) // what becomes of a message
    Q_PROPERTY(QString glyph READ glyph NOTIFY sourceChanged)             // the drawing of that place
    // Who else can read what is sent; empty when nobody can.
    Q_PROPERTY(QString warning READ warning NOTIFY sourceChanged)
    // Why the private cloud is off; empty when it isn't or was never on.
    Q_PROPERTY(QString cloudNotice READ cloudNotice NOTIFY sourceChanged)

public:
    enum Role {
        NameRole = Qt::UserRole + 1,
        DestinationRole,
        GlyphRole,
        ProblemRole, // why it can't be picked; empty when it can
        InUseRole,
    };

    // `router` outlives this object.
    explicit SourceMenuViewModel(AIRequestRouter &router, QObject *parent = nullptr);

    [[nodiscard]] QString name() const;
    [[nodiscard]] QString destination() const;
    [[nodiscard]] QString glyph() const;
    [[nodiscard]] QString warning() const;
    [[nodiscard]] QString cloudNotice() const;

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    // Nothing for a row that can't be picked.
    Q_INVOKABLE void choose(int row);

Q_SIGNALS:
    void sourceChanged();

private:
    void refresh();

    AIRequestRouter &m_router;
    std::vector<SourceOption> m_options;
};

} // namespace morvane
