#pragma once

#include "app/WindowEngine.h"
#include "view_models/StartupViewModel.h"

#include <QObject>

class QQuickWindow;

namespace morvane {

// The small window that stands while the key to the person's data is being fetched.
class StartupWindow : public QObject {
    Q_OBJECT
public:
    explicit StartupWindow(bool dark, QObject *parent = nullptr);

    void show(const QString &sentence, const StartupViewModel::Ways &ways);
    void raise();

Q_SIGNALS:
    void retryChosen();
    void fileChosen();
    void proceedChosen();
    void afreshChosen();
    void quitChosen();

private:
    StartupViewModel m_model;
    WindowEngine m_engine;
    QQuickWindow *m_window = nullptr; // owned by the engine
};

} // namespace morvane
