#pragma once

#include "app/WindowEngine.h"

#include <QObject>
#include <QPointer>
#include <QQuickItem>
#include <QQuickWindow>
#include <QVariantMap>

#include <memory>

namespace morvane {

struct Presentation;

// Loads the window and brings it up.
class MainWindowController : public QObject {
    Q_OBJECT
public:
    // What a window is loaded from, with its components read already.
    [[nodiscard]] static std::unique_ptr<WindowEngine> prepareEngine();

    explicit MainWindowController(Presentation &presentation,
                                  std::unique_ptr<WindowEngine> engine = prepareEngine());

    ~MainWindowController() override;

    // Null when the window could not be loaded; the reason is in the log.
    [[nodiscard]] QQuickWindow *window() const { return m_window; }
    [[nodiscard]] QQmlEngine &engine() { return *m_engine; }

    // Shows the window or brings the open one to the front.
    void show();

protected:
    // Without a tray a hidden window would be lost, so closing it leaves it minimised.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    // What stands in the window comes and goes with the lock, and with it every item that ever held a word.
    void showContent();
    void dropContent();
    [[nodiscard]] bool needsShowingAnew() const;
    [[nodiscard]] QVariantMap whereabouts() const;

    Presentation &m_presentation;
    const std::unique_ptr<WindowEngine> m_engine;
    QQuickWindow *m_window = nullptr; // owned by the engine
    QPointer<QQuickItem> m_content;   // null while locked
    QVariantMap m_place;              // where the person had been when it went
};

} // namespace morvane
