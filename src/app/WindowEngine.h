#pragma once

#include <QQmlApplicationEngine>

#include <map>

class QQuickItem;
class QQuickWindow;

namespace morvane {

// An engine with the window's module in it that can't reach the network, so that nothing fetches by being
// drawn. Its quit() does nothing but tell who listens.
class WindowEngine : public QQmlApplicationEngine {
    Q_OBJECT
public:
    explicit WindowEngine(QObject *parent = nullptr);
    // Ends what it loaded, and every object that waits to be deleted.
    ~WindowEngine() override;

    // Reads a component and the types it names, so that loading it has only its objects to make.
    void prepare(const QString &fileName);
    // Loads a component of the module by its file name, with its required properties.
    void loadComponent(const QString &fileName, const QVariantMap &properties);
    // Makes an item of such a component; `parent` owns it. Null when it can't be made; the reason is in the
    // log.
    [[nodiscard]] QQuickItem *make(const QString &fileName, QQuickItem *parent,
                                   const QVariantMap &properties);
    // Makes a window of such a component, for the caller to delete before this. Null likewise.
    [[nodiscard]] QQuickWindow *makeWindow(const QString &fileName, const QVariantMap &properties);

private:
    std::map<QString, QQmlComponent *> m_prepared; // keep what was read; children
};

} // namespace morvane
