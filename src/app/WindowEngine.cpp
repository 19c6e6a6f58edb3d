#include "app/WindowEngine.h"

#include "network/RefusingNetworkAccessManagerFactory.h"

#include <QCoreApplication>
#include <QQmlComponent>
#include <QQuickItem>
#include <QQuickWindow>
#include <QtQml/QQmlExtensionPlugin>

#include <utility>

Q_IMPORT_QML_PLUGIN(MorvanePlugin)
extern void qml_register_types_Morvane_ViewModels();

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QUrl urlOf(const QString &fileName)
{
    return QUrl(u"qrc:/qt/qml/Morvane/"_s + fileName);
}

} // namespace

WindowEngine::WindowEngine(QObject *parent)
    : QQmlApplicationEngine(parent)
{
    qml_register_types_Morvane_ViewModels(); // names the function, so that the linker keeps its file
    static RefusingNetworkAccessManagerFactory refusingFactory;
    setNetworkAccessManagerFactory(&refusingFactory);
    addImportPath(u"qrc:/qt/qml"_s);
}

WindowEngine::~WindowEngine()
{
    // Rows of lists and what Loaders hold go by posted events. From Qt 6.8 the types behind an object that
    // outlives its engine stay known, and casts to them give null in the next one.
    const QObjectList roots = rootObjects();
    qDeleteAll(roots);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void WindowEngine::prepare(const QString &fileName)
{
    if (auto &prepared = m_prepared[fileName]; !prepared)
        prepared = new QQmlComponent(this, urlOf(fileName), this);
}

void WindowEngine::loadComponent(const QString &fileName, const QVariantMap &properties)
{
    setInitialProperties(properties);
    load(urlOf(fileName));
    // With its first load it has taken to quit the application as well, which asks the windows to close, and
    // closing one puts it away. Whoever made the engine takes its quit.
    disconnect(this, &QQmlEngine::quit, QCoreApplication::instance(), nullptr);
    delete std::exchange(m_prepared[fileName], nullptr);
}

QQuickItem *WindowEngine::make(const QString &fileName, QQuickItem *parent, const QVariantMap &properties)
{
    prepare(fileName);
    QQmlComponent &component = *m_prepared[fileName];
    auto *const item = qobject_cast<QQuickItem *>(component.beginCreate(rootContext()));
    if (!item) {
        qWarning("%s", qPrintable(component.errorString()));
        return nullptr;
    }
    component.setInitialProperties(item, properties);
    item->setParent(parent);
    item->setParentItem(parent);
    component.completeCreate();
    return item;
}

QQuickWindow *WindowEngine::makeWindow(const QString &fileName, const QVariantMap &properties)
{
    prepare(fileName);
    QQmlComponent &component = *m_prepared[fileName];
    auto *const window = qobject_cast<QQuickWindow *>(component.createWithInitialProperties(properties));
    if (!window)
        qWarning("%s", qPrintable(component.errorString()));
    return window;
}

} // namespace morvane
