#pragma once

#include <QQmlParserStatus>
#include <QQuickItem>
#include <QtQml/qqmlregistration.h>

namespace morvane {

// Lets the window's shortcuts work while a text that is only read has the focus. Such a text claims every key
// that could be a shortcut and does nothing with it; here it keeps those alone that copy and select.
class ReadOnlyKeys : public QObject, public QQmlParserStatus {
    Q_OBJECT
    QML_ELEMENT
    Q_INTERFACES(QQmlParserStatus)
    Q_PROPERTY(QQuickItem *text MEMBER m_text REQUIRED)

public:
    using QObject::QObject;

    void classBegin() override {}
    void componentComplete() override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QQuickItem *m_text = nullptr;
};

} // namespace morvane
