#include "app/WindowEngine.h"

#include "network/RefusingNetworkAccessManagerFactory.h"

#include <QtQml/QQmlExtensionPlugin>

Q_IMPORT_QML_PLUGIN(MorvanePlugin)
extern void qml_register_types_Morvane_ViewModels();

namespace morvane {

using namespace Qt::StringLiterals;

WindowEngine::WindowEngine(QObject *parent)
    : QQmlApplicationEngine(parent)
{
    qml_register_types_Morvane_ViewModels(); // names the function, so that the linker keeps its file
    static RefusingNetworkAccessManagerFactory refusingFactory;
    setNetworkAccessManagerFactory(&refusingFactory);
    addImportPath(u"qrc:/qt/qml"_s);
}

void WindowEngine::loadComponent(const QString &fileName, const QVariantMap &properties)
{
    setInitialProperties(properties);
    load(QUrl(u"qrc:/qt/qml/Morvane/"_s + fileName));
}

} // namespace morvane
