#pragma once

#include "markdown/AttributedText.h"

#include <QColor>
#include <QObject>
#include <QPointer>
#include <QQuickTextDocument>
#include <QTextCursor>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

namespace morvane {

// Writes formatted words into the document of a TextEdit. No markup is read on the way: what stands in the
// words is shown and can't fetch or format anything.
class BlockDocument : public QObject {
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(QQuickTextDocument *document READ document WRITE setDocument NOTIFY documentChanged)
    // The links of the text, the first hundred: maps of `words`, `address`, and `start` and `end` in the
    // text.
    Q_PROPERTY(QVariantList links READ links NOTIFY written)
    Q_PROPERTY(QColor linkColor MEMBER m_linkColor NOTIFY lookChanged)
    Q_PROPERTY(QColor codeGround MEMBER m_codeGround NOTIFY lookChanged)
    Q_PROPERTY(QString codeFamily MEMBER m_codeFamily NOTIFY lookChanged)
    // Least height of a line in logical pixels; scripts that need more get more.
    Q_PROPERTY(double lineHeight MEMBER m_lineHeight NOTIFY lookChanged)

public:
    explicit BlockDocument(QObject *parent = nullptr);

    [[nodiscard]] QQuickTextDocument *document() const { return m_document; }
    void setDocument(QQuickTextDocument *document);

    [[nodiscard]] QVariantList links() const;
    // The address behind the character at a place of the text; empty for none.
    Q_INVOKABLE QString linkAt(int position) const;

    // What is copied of the text between two of its places.
    [[nodiscard]] virtual QString textBetween(int from, int to) const = 0;

Q_SIGNALS:
    void documentChanged();
    void lookChanged();
    void written();

protected:
    // Writes all of it anew.
    virtual void showAll() = 0;

    [[nodiscard]] QTextDocument *textDocument() const;
    [[nodiscard]] QTextCharFormat format(const AttributedText::Run &run) const;
    [[nodiscard]] double lineHeight() const { return m_lineHeight; }
    // Inserts the text from a place on. U+2029 begins a new paragraph like the one before it.
    void insert(QTextCursor &cursor, const AttributedText &text, qsizetype from = 0) const;

    // As many UTF-16 units as the text has, and none that a document would take for more than text: its lines
    // stay in one paragraph.
    [[nodiscard]] static QString harmless(QString text);

private:
    QPointer<QQuickTextDocument> m_document;
    QColor m_linkColor;
    QColor m_codeGround;
    QString m_codeFamily;
    double m_lineHeight = 0;
};

} // namespace morvane
