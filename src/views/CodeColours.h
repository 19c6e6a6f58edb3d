#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickTextDocument>
#include <QString>
#include <QSyntaxHighlighter>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>

namespace morvane {

// Colours the code in a TextEdit by its language. The text stays as it is, and where it grows at its end only
// the lines that are new are read. Nothing is done for a language that isn't known.
class CodeColours : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QQuickTextDocument *document READ document WRITE setDocument NOTIFY documentChanged)
    Q_PROPERTY(QString language READ language WRITE setLanguage NOTIFY languageChanged) // by any of its names
    // A colour for each of "keyword", "type", "name", "string", "number" and "comment".
    Q_PROPERTY(QVariantMap colors READ colors WRITE setColors NOTIFY colorsChanged)

public:
    explicit CodeColours(QObject *parent = nullptr);
    ~CodeColours() override;

    [[nodiscard]] QQuickTextDocument *document() const { return m_document; }
    void setDocument(QQuickTextDocument *document);
    [[nodiscard]] const QString &language() const { return m_language; }
    void setLanguage(const QString &language);
    [[nodiscard]] const QVariantMap &colors() const { return m_colors; }
    void setColors(const QVariantMap &colors);

Q_SIGNALS:
    void documentChanged();
    void languageChanged();
    void colorsChanged();

private:
    void colourAnew();

    QPointer<QQuickTextDocument> m_document;
    QString m_language;
    QVariantMap m_colors;
    QPointer<QSyntaxHighlighter> m_highlighter; // goes with the document at the latest; none for plain text
};

} // namespace morvane
