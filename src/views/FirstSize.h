#pragma once

#include <QQmlParserStatus>
#include <QQuickWindow>
#include <QSizeF>
#include <QtQml/qqmlregistration.h>

namespace morvane {

// Gives a window the size that it opens with: the one it was drawn for, or what its screen has room for. On a
// screen that is smaller than the window's least size, that one shrinks as well, so that no part is out of
// reach.
class FirstSize : public QObject, public QQmlParserStatus {
    Q_OBJECT
    QML_ELEMENT
    Q_INTERFACES(QQmlParserStatus)
    Q_PROPERTY(QQuickWindow *window MEMBER m_window REQUIRED)
    // Logical pixels, without the window's frame.
    Q_PROPERTY(QSizeF best MEMBER m_best REQUIRED)
    Q_PROPERTY(QSizeF least MEMBER m_least REQUIRED)

public:
    using QObject::QObject;

    void classBegin() override {}
    void componentComplete() override;

private:
    QQuickWindow *m_window = nullptr;
    QSizeF m_best;
    QSizeF m_least;
};

} // namespace morvane
