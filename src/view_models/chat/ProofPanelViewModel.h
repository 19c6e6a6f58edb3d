#pragma once

#include "view_models/chat/AnswerProofs.h"

#include <QObject>
#include <QStringList>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

namespace morvane {

class MessageListModel;

// The panel beside the chat that shows where one answer came from: the steps of its proof while it runs, and
// what its row in the proof ledger holds. GUI thread.
class ProofPanelViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the chat")
    Q_PROPERTY(bool isOpen READ isOpen NOTIFY isOpenChanged)
    Q_PROPERTY(QString heading READ heading NOTIFY changed) // place and proof in a few words
    Q_PROPERTY(QString mark READ mark NOTIFY changed)       // as in MessageListModel::ProofMarkRole
    Q_PROPERTY(
        QString remark READ remark NOTIFY changed) // what else there is to say of it; empty for nothing
    Q_PROPERTY(QVariantList steps READ steps NOTIFY stepsChanged)  // ProofWords::steps
    Q_PROPERTY(QVariantList facts READ facts NOTIFY factsChanged)  // ProofFacts::of
    Q_PROPERTY(QStringList limits READ limits NOTIFY factsChanged) // ProofFacts::limits
    // Of the private cloud, which was asked first; empty where it wasn't.
    Q_PROPERTY(QVariantList formerFacts READ formerFacts NOTIFY factsChanged)

public:
    // Both outlive this object.
    ProofPanelViewModel(const AnswerProofs &proofs, const MessageListModel &messages,
                        QObject *parent = nullptr);

    [[nodiscard]] bool isOpen() const { return !m_answer.isNull(); }
    [[nodiscard]] const QString &heading() const { return m_shown.heading; }
    [[nodiscard]] const QString &mark() const { return m_shown.mark; }
    [[nodiscard]] const QString &remark() const { return m_shown.remark; }
    [[nodiscard]] const QVariantList &steps() const { return m_shown.steps; }
    [[nodiscard]] const QVariantList &facts() const { return m_shown.facts; }
    [[nodiscard]] const QStringList &limits() const { return m_shown.limits; }
    [[nodiscard]] const QVariantList &formerFacts() const { return m_shown.formerFacts; }

    // Nothing for a message that isn't in the open chat.
    Q_INVOKABLE void open(const QString &messageId);
    Q_INVOKABLE void close();

Q_SIGNALS:
    void isOpenChanged();
    void opened(); // also where another answer was shown
    void changed();
    void stepsChanged();
    void factsChanged();

private:
    struct Shown {
        QString heading;
        QString mark;
        QString remark;
        QVariantList steps;
        QVariantList facts;
        QStringList limits;
        QVariantList formerFacts;
    };

    [[nodiscard]] Shown read(const AnswerProofs::Line &line) const;
    void refresh();

    const AnswerProofs &m_proofs;
    const MessageListModel &m_messages;
    QUuid m_answer; // null while closed
    Shown m_shown;
};

} // namespace morvane
