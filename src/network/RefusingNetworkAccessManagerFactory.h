#pragma once

#include <QQmlNetworkAccessManagerFactory>

namespace morvane {

// Gives the QML engine a network access that refuses every request, so nothing can fetch by being drawn.
// The engine calls it from any thread. Outlives its engine.
class RefusingNetworkAccessManagerFactory final : public QQmlNetworkAccessManagerFactory {
public:
    QNetworkAccessManager *create(QObject *parent) override;
};

} // namespace morvane
