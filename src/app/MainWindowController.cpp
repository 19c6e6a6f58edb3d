#include "app/MainWindowController.h"

#include "app/AppState.h"
#include "network/RefusingNetworkAccessManagerFactory.h"
#include "utils/Product.h"
#include "view_models/AISettingsViewModel.h"
#include "view_models/ChatViewModel.h"
#include "view_models/CompanionViewModel.h"
#include "view_models/ConversationListModel.h"
#include "view_models/NetworkLedgerViewModel.h"
#include "view_models/ShellViewModel.h"

#include <QCloseEvent>
#include <QtQml/QQmlExtensionPlugin>

Q_IMPORT_QML_PLUGIN(MorvanePlugin)
extern void qml_register_types_Morvane_ViewModels();

using namespace Qt::StringLiterals;

MainWindowController::MainWindowController(AppState &state, QObject *parent)
    : QObject(parent)
{
    qml_register_types_Morvane_ViewModels(); // names the function, so that the linker keeps its file
    static RefusingNetworkAccessManagerFactory refusingFactory;
    m_engine.setNetworkAccessManagerFactory(&refusingFactory);
    m_engine.addImportPath(u"qrc:/qt/qml"_s);
    m_engine.setInitialProperties({{u"chat"_s, QVariant::fromValue(&state.chat())},
                                   {u"conversations"_s, QVariant::fromValue(&state.conversations())},
                                   {u"aiSettings"_s, QVariant::fromValue(&state.aiSettings())},
                                   {u"networkLedger"_s, QVariant::fromValue(&state.networkLedger())},
                                   {u"shell"_s, QVariant::fromValue(&state.shell())},
                                   {u"companion"_s, QVariant::fromValue(&state.companion())}});
    m_engine.load(QUrl(u"qrc:/qt/qml/Morvane/Main.qml"_s));
    if (!m_engine.rootObjects().isEmpty())
        m_window = qobject_cast<QQuickWindow *>(m_engine.rootObjects().constFirst());
    if (!m_window)
        return;
    m_window->installEventFilter(this);
    connect(&state, &AppState::mainWindowRequested, this, &MainWindowController::show);
}

void MainWindowController::show()
{
    if (!m_window)
        return;
    if (m_window->windowStates() & Qt::WindowMinimized)
        m_window->showNormal();
    else
        m_window->show();
    m_window->raise();
    m_window->requestActivate();
}

bool MainWindowController::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != m_window || event->type() != QEvent::Close)
        return QObject::eventFilter(watched, event);
    event->ignore();
    m_window->showMinimized();
    return true;
}
