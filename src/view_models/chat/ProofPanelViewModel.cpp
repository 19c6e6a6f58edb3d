#include "view_models/chat/ProofPanelViewModel.h"

#include "view_models/chat/MessageListModel.h"
#include "view_models/chat/ProofFacts.h"
#include "view_models/chat/ProofWords.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Mark = AnswerProofs::Line::Mark;

QString remarkOn(const AnswerProofs::Known &known, Mark mark)
{
    if (mark == Mark::running && known.steps->at(ProofWatch::Stage::sealing) == ProofWatch::State::waiting)
        return u"Nothing of your message is sent under this proof before it holds."_s;
    if (mark == Mark::running)
        return u"The proof holds. Your message goes out encrypted to the key that it names."_s;
    if (known.before && ProofWords::isRefused(*known.before))
        return u"The private cloud was asked first. Without a proof nothing of your message is sent to it, "
               u"so the "
               "answer came from elsewhere."_s;
    if (known.before)
        return u"The private cloud was asked first. Its server was verified, but its reply could not be used."_s;
    if (known.row && ProofWords::isRefused(*known.row))
        return u"Without a proof nothing of your message is sent."_s;
    if (known.row)
        return {};
    return u"Only the place was kept with this answer. The rest is held in memory: it is gone after a "
           u"restart, "
           "when the list is cleared, and behind the 200 latest rows."_s;
}

} // namespace

ProofPanelViewModel::ProofPanelViewModel(const AnswerProofs &proofs, const MessageListModel &messages,
                                         QObject *parent)
    : QObject(parent)
    , m_proofs(proofs)
    , m_messages(messages)
{
    connect(&messages, &QAbstractItemModel::dataChanged, this, &ProofPanelViewModel::refresh);
    connect(&messages, &QAbstractItemModel::rowsRemoved, this, &ProofPanelViewModel::refresh);
    connect(&messages, &QAbstractItemModel::modelReset, this, &ProofPanelViewModel::refresh);
}

void ProofPanelViewModel::open(const QString &messageId)
{
    const bool wasOpen = isOpen();
    m_answer = QUuid(messageId);
    refresh();
    if (isOpen() != wasOpen)
        Q_EMIT isOpenChanged();
    if (isOpen())
        Q_EMIT opened();
}

void ProofPanelViewModel::close()
{
    if (!isOpen())
        return;
    m_answer = {};
    Q_EMIT isOpenChanged();
}

// A reply that streams changes often, and what is shown of its proof seldom.
void ProofPanelViewModel::refresh()
{
    if (!isOpen())
        return;
    const auto line = m_messages.proofLine(m_answer);
    if (!line) {
        close();
        return;
    }
    const Shown former = std::exchange(m_shown, read(*line));
    if (former.facts != m_shown.facts || former.limits != m_shown.limits ||
        former.formerFacts != m_shown.formerFacts)
        Q_EMIT factsChanged();
    if (former.steps != m_shown.steps)
        Q_EMIT stepsChanged();
    Q_EMIT changed();
}

ProofPanelViewModel::Shown ProofPanelViewModel::read(const AnswerProofs::Line &line) const
{
    const AnswerProofs::Known known = m_proofs.known(m_answer);
    Shown shown{.heading = line.words, .mark = line.code(), .remark = remarkOn(known, line.mark)};
    if (known.steps && line.mark != Mark::verified) // what passed is told by its facts
        shown.steps = ProofWords::steps(*known.steps);
    if (known.row && line.mark != Mark::running) {
        shown.facts = ProofFacts::of(*known.row);
        shown.limits = ProofFacts::limits(*known.row);
    }
    if (known.before)
        shown.formerFacts = ProofFacts::of(*known.before);
    return shown;
}

} // namespace morvane
