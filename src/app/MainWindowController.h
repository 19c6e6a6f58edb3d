#pragma once

#include "app/WindowEngine.h"

#include <QObject>
#include <QPointer>
#include <QQuickItem>
#include <QQuickWindow>
#include <QVariantMap>

#include <functional>
#include <memory>

namespace morvane {

class LockedSettings;
class SettingsModels;
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

    // Whether something is left on the screen that leads back to a hidden window. Without it closing the
    // window only minimises it.
    void setReachable(std::function<bool()> isReachable) { m_isReachable = std::move(isReachable); }
    // Nothing leads back to it: where it was hidden, it comes as a minimised one.
    void comeMinimised();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    // What stands in the window comes and goes with the lock, and with it every item that ever held a word.
    void showContent();
    void dropContent();
    [[nodiscard]] bool needsShowingAnew() const;
    [[nodiscard]] QVariantMap whereabouts() const;
    bool comeBack(); // false: it wasn't hidden

    Presentation &m_presentation;
    const std::unique_ptr<SettingsModels> m_models;
    const std::unique_ptr<WindowEngine> m_engine;
    QQuickWindow *m_window = nullptr; // owned by the engine
    std::function<bool()> m_isReachable;
    bool m_isHidden = false; // put away by the person
    std::unique_ptr<LockedSettings> m_lockedSettings;
    QPointer<QQuickItem> m_content; // null while locked
    QVariantMap m_place;            // where the person had been when it went
};

} // namespace morvane
