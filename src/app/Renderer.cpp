#include "app/Renderer.h"

#include "utils/log/Log.h"

#include <QOpenGLContext>
#include <QQuickWindow>

namespace morvane {

using namespace Qt::StringLiterals;

void Renderer::choose()
{
    if (!qEnvironmentVariableIsEmpty("QT_QUICK_BACKEND") || !qEnvironmentVariableIsEmpty("QSG_RHI_BACKEND"))
        return; // somebody has chosen
    QOpenGLContext trial;
    if (trial.create())
        return;
    Log::info(Log::Category::App, "No OpenGL here; the processor draws the window"_L1);
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
}

} // namespace morvane
