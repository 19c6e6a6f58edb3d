#pragma once

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>

#include <vector>

namespace morvane {

// What a test of the connection found, one row each, in the order of finding. GUI thread.
class ConnectionFindings : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")

public:
    struct Finding {
        QString title; // what was tried
        QString words; // what came of it, as a sentence
        bool works = false;
    };
    enum Role { TitleRole = Qt::UserRole + 1, WordsRole, WorksRole };

    using QAbstractListModel::QAbstractListModel;

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    void add(Finding finding);
    void clear();

private:
    std::vector<Finding> m_findings;
};

} // namespace morvane
