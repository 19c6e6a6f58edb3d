#include "app/DemoPlayer.h"

#include "view_models/chat/ChatViewModel.h"
#include "view_models/chat/ProofWords.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QKeyEvent>
#include <QTimer>

#include <cstdio>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString question = u"What happens to the words I type here?"_s;

void print(const QString &text)
{
    std::fputs(text.toUtf8().constData(), stdout);
    std::fflush(stdout);
}

} // namespace

DemoPlayer::DemoPlayer(QQuickWindow &window, ChatViewModel &chat, const ProofWatch &watch,
                       QString picturePath, QObject *parent)
    : QObject(parent)
    , m_window(window)
    , m_chat(chat)
    , m_watch(watch)
    , m_picturePath(std::move(picturePath))
{
    connect(chat.messages(), &QAbstractItemModel::dataChanged, this, &DemoPlayer::printNewText);
    connect(&watch, &ProofWatch::changed, this, &DemoPlayer::printNewSteps);
    connect(&chat, &ChatViewModel::isRespondingChanged, this, [this] {
        if (!m_chat.isResponding())
            takePicture();
    });
}

void DemoPlayer::play()
{
    if (m_window.isActive())
        ask();
    else
        connect(&m_window, &QWindow::activeChanged, this, &DemoPlayer::ask, Qt::SingleShotConnection);
}

void DemoPlayer::ask()
{
    print(u"You: %1\n\n%2: "_s.arg(question, m_chat.sourceLabel()));
    type(question);
    press(Qt::Key_Return, u"\r"_s);
    if (!m_chat.isResponding()) {
        print(u"\nThe message was not sent.\n"_s);
        Q_EMIT finished(1);
    }
}

void DemoPlayer::type(const QString &text)
{
    for (const QChar character : text)
        press(0, QString(character));
}

void DemoPlayer::press(int key, const QString &text)
{
    for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent event(type, key, Qt::NoModifier, text);
        QCoreApplication::sendEvent(&m_window, &event);
    }
}

// In their order, each once it is known how it went.
void DemoPlayer::printNewSteps()
{
    const ProofWatch::Run &run = *m_watch.run();
    if (std::exchange(m_proof, run.number) != run.number)
        m_printedSteps = 0;
    const QVariantList steps = ProofWords::steps(run);
    for (; m_printedSteps < steps.size(); ++m_printedSteps) {
        const QVariantMap step = steps.at(m_printedSteps).toMap();
        const QString state = step.value(u"state"_s).toString();
        if (state == "running"_L1 || (state == "waiting"_L1 && !run.isOver))
            return;
        print(u"%1  %2: %3\n"_s.arg(m_printedSteps == 0 ? u"\n"_s : QString(),
                                    step.value(u"name"_s).toString(), step.value(u"words"_s).toString()));
    }
}

void DemoPlayer::printNewText()
{
    const auto *messages = m_chat.messages();
    const QModelIndex last = messages->index(messages->rowCount() - 1);
    if (last.data(MessageListModel::IsUserRole).toBool())
        return;
    const QString text = last.data(MessageListModel::TextRole).toString();
    print(text.sliced(std::min(m_printed, text.size())));
    m_printed = text.size();
}

void DemoPlayer::takePicture()
{
    print(m_chat.hasBanner() ? u"\n%1\n"_s.arg(m_chat.banner().message) : u"\n"_s);
    // One more turn of the event loop lays the finished reply out.
    QTimer::singleShot(300, this, [this] {
        QDir().mkpath(QFileInfo(m_picturePath).absolutePath());
        const bool saved = m_window.grabWindow().save(m_picturePath);
        print(saved ? u"\nA picture of the window is in %1\n"_s.arg(m_picturePath)
                    : u"\nThe picture could not be saved.\n"_s);
        Q_EMIT finished(saved && !m_chat.hasBanner() ? 0 : 1);
    });
}

} // namespace morvane
