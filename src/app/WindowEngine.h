#pragma once

#include <QQmlApplicationEngine>

namespace morvane {

// An engine with the window's module in it that can't reach the network, so that nothing fetches by being
// drawn.
class WindowEngine : public QQmlApplicationEngine {
    Q_OBJECT
public:
    explicit WindowEngine(QObject *parent = nullptr);

    // Loads a component of the module by its file name, with its required properties.
    void loadComponent(const QString &fileName, const QVariantMap &properties);
};

} // namespace morvane
