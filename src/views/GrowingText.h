#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickTextDocument>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace morvane {

// Shows a text that mostly grows at its end in a TextEdit. What stands already is neither laid out again nor
// deselected: only the new piece is inserted. The text is plain, whatever it looks like.
class GrowingText : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QQuickTextDocument *document READ document WRITE setDocument NOTIFY documentChanged)
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY textChanged)
    // Least height of a line in logical pixels; scripts that need more get more.
    Q_PROPERTY(double lineHeight READ lineHeight WRITE setLineHeight NOTIFY lineHeightChanged)

public:
    using QObject::QObject;

    [[nodiscard]] QQuickTextDocument *document() const { return m_document; }
    void setDocument(QQuickTextDocument *document);
    [[nodiscard]] const QString &text() const { return m_text; }
    void setText(const QString &text);
    [[nodiscard]] double lineHeight() const { return m_lineHeight; }
    void setLineHeight(double height);

Q_SIGNALS:
    void documentChanged();
    void textChanged();
    void lineHeightChanged();

private:
    void showAll();
    void append(QStringView piece);

    QPointer<QQuickTextDocument> m_document;
    QString m_text;
    double m_lineHeight = 0;
};

} // namespace morvane
