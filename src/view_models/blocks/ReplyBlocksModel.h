#pragma once

#include "markdown/StreamingMarkdown.h"
#include "view_models/blocks/HeldMarks.h"

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>

#include <optional>

namespace morvane {

// The blocks of one reply, for the view that draws them. While the reply grows, only rows that really change
// are told, and a row keeps its kind for as long as it lives.
class ReplyBlocksModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY textChanged)
    // Whether the text is still being written.
    Q_PROPERTY(bool growing READ isGrowing WRITE setGrowing NOTIFY growingChanged)
    // Whether the end of a growing text waits for what comes next.
    Q_PROPERTY(bool holding READ isHolding NOTIFY holdingChanged)
    // Blocks that are not shown: a text may hold more than any window draws.
    Q_PROPERTY(int hiddenCount READ hiddenCount NOTIFY hiddenCountChanged)

public:
    enum Role {
        KindRole = Qt::UserRole + 1, // text: "paragraph", "code", …
        ContentRole,                 // map of what the kind's component shows
        PlainTextRole,               // text
    };

    using QAbstractListModel::QAbstractListModel;

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    [[nodiscard]] const QString &text() const { return m_text; }
    void setText(const QString &text);
    [[nodiscard]] bool isGrowing() const { return m_growing; }
    void setGrowing(bool growing);
    [[nodiscard]] bool isHolding() const { return m_isHolding; }
    [[nodiscard]] int hiddenCount() const;

    // Shows what waits, as nothing comes.
    Q_INVOKABLE void showHeld() { update(); }
    // Shows some more of the hidden ones.
    Q_INVOKABLE void showMore();

Q_SIGNALS:
    void textChanged();
    void growingChanged();
    void holdingChanged();
    void hiddenCountChanged();

private:
    [[nodiscard]] QString shownText();
    [[nodiscard]] QString withoutOpenRow(const QString &text) const;
    void update();
    void show(MarkdownRenderer::Blocks blocks, qsizetype same);

    QString m_text;
    QString m_read; // the text that the blocks are of
    bool m_growing = false;
    HeldMarks m_marks;
    bool m_isHolding = false;
    std::optional<StreamingMarkdown> m_streaming; // once the text has grown
    MarkdownRenderer::Blocks m_blocks;
    int m_rows = 0; // how many of the blocks are shown
    int m_limit = 0;
};

} // namespace morvane
