#include "view_models/settings/ScreenTestViewModel.h"

#include "services/ScreenGlancing.h"
#include "utils/text/UserPresentableError.h"

namespace morvane {

using namespace Qt::StringLiterals;

ScreenTestViewModel::ScreenTestViewModel(ScreenGlancing *screen, QObject *parent)
    : QObject(parent)
    , m_screen(screen)
{}

void ScreenTestViewModel::test()
{
    if (!m_screen)
        return;
    m_isTesting = !m_isTesting;
    m_message.clear();
    m_test = {};
    if (m_isTesting)
        m_test =
            TaskHandle::start([this](std::stop_token stop) { return look(QPointer(this), std::move(stop)); });
    Q_EMIT changed();
}

QCoro::Task<> ScreenTestViewModel::look(QPointer<ScreenTestViewModel> self, std::stop_token stop)
{
    bool worked = false;
    QString message;
    try {
        const QString text = co_await self->m_screen->captureText(stop);
        const auto words = text.simplified().count(u' ') + 1;
        worked = true;
        message =
            words == 1 ? u"It works: one word was read."_s : u"It works: %1 words were read."_s.arg(words);
    } catch (...) {
        const ErrorPresentation why = presentationOf(std::current_exception());
        message = why.suggestion ? why.message + u' ' + *why.suggestion : why.message;
    }
    if (self && !stop.stop_requested())
        self->finish(worked, message);
}

void ScreenTestViewModel::finish(bool worked, const QString &message)
{
    m_isTesting = false;
    m_worked = worked;
    m_message = message;
    Q_EMIT changed();
}

} // namespace morvane
