#pragma once

#include "services/GlobalShortcutBinding.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>

namespace morvane {

class AppLockService;
class GlobalShortcutService;
class GlobalShortcutViewModel;
struct Presentation;
struct Storage;

// The keys that work while another program has the keyboard, and what they do. What the constructor takes
// outlives this; without `desktop` there are none.
class GlobalKeys : public QObject {
    Q_OBJECT
public:
    GlobalKeys(GlobalShortcutBinding *desktop, Storage &storage);
    ~GlobalKeys() override;

    const std::unique_ptr<GlobalShortcutService> service;
    const std::unique_ptr<GlobalShortcutViewModel> chat;
    const std::unique_ptr<GlobalShortcutViewModel> talk;

    // All outlive this from now on. `show` brings the window to the front. While locked either key does no
    // more than that, and so while the welcome isn't done.
    void lead(Presentation &presentation, const AppLockService &lock, std::function<void()> show);

private:
    void press(GlobalShortcut shortcut, const QString &token);
    void release(GlobalShortcut shortcut);
    void drop(GlobalShortcut shortcut);
    void tellTaken(const QString &keys);

    Presentation *m_presentation = nullptr;
    const AppLockService *m_lock = nullptr;
    std::function<void()> m_show;
    bool m_isTalking = false; // by the key, and not by a button
};

} // namespace morvane
