#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickTextDocument>
#include <QtQml/qqmlregistration.h>

namespace morvane {

// Gives the lines of a text the height that a TextEdit has no property for. What is typed, pasted or set from
// elsewhere has it from the first frame on, and it is no step that could be undone.
class LineHeight : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QQuickTextDocument *document READ document WRITE setDocument NOTIFY documentChanged)
    // Least height of a line in logical pixels; scripts that need more get more.
    Q_PROPERTY(double height READ height WRITE setHeight NOTIFY heightChanged)

public:
    using QObject::QObject;

    [[nodiscard]] QQuickTextDocument *document() const { return m_document; }
    void setDocument(QQuickTextDocument *document);
    [[nodiscard]] double height() const { return m_height; }
    void setHeight(double height);

Q_SIGNALS:
    void documentChanged();
    void heightChanged();

private:
    void apply();

    QPointer<QQuickTextDocument> m_document;
    double m_height = 0;
    bool m_applies = false;
};

} // namespace morvane
