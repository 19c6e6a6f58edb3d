#include "app/StartupWindow.h"

#include <QQuickWindow>

namespace morvane {

using namespace Qt::StringLiterals;

StartupWindow::StartupWindow(bool dark, QObject *parent)
    : QObject(parent)
{
    connect(&m_model, &StartupViewModel::retryChosen, this, &StartupWindow::retryChosen);
    connect(&m_model, &StartupViewModel::fileChosen, this, &StartupWindow::fileChosen);
    connect(&m_model, &StartupViewModel::proceedChosen, this, &StartupWindow::proceedChosen);
    connect(&m_model, &StartupViewModel::afreshChosen, this, &StartupWindow::afreshChosen);
    connect(&m_engine, &QQmlEngine::quit, this, &StartupWindow::quitChosen);
    m_engine.loadComponent(u"StartupWindow.qml"_s,
                           {{u"startup"_s, QVariant::fromValue(&m_model)}, {u"dark"_s, dark}});
    if (!m_engine.rootObjects().isEmpty())
        m_window = qobject_cast<QQuickWindow *>(m_engine.rootObjects().constFirst());
}

void StartupWindow::show(const QString &sentence, const StartupViewModel::Ways &ways)
{
    m_model.show(sentence, ways);
    if (m_window)
        m_window->show();
}

void StartupWindow::raise()
{
    if (!m_window)
        return;
    m_window->raise();
    m_window->requestActivate();
}

} // namespace morvane
