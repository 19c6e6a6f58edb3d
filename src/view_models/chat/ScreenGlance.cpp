#include "view_models/chat/ScreenGlance.h"

#include "documents/DocumentText.h"
#include "persistence/SettingsStore.h"
#include "services/ScreenGlanceError.h"
#include "services/ScreenGlancing.h"
#include "view_models/chat/BannerDesk.h"
#include "view_models/companion/CompanionViewModel.h"

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

ErrorBanner bannerOf(const std::exception_ptr &error, ErrorBanner::Retry retry)
{
    try {
        std::rethrow_exception(error);
    } catch (const ScreenGlanceError &known) {
        ErrorBanner banner = ErrorBanner::of(presentationOf(error), retry);
        if (known.is(ScreenGlanceError::Case::permissionNeeded))
            banner.recovery = ErrorBanner::Recovery::openScreenRecordingSettings;
        if (known.is(ScreenGlanceError::Case::needsRelaunch))
            banner.recovery = ErrorBanner::Recovery::relaunchForScreenRecording;
        return banner;
    } catch (...) {
        const ScreenGlanceError unknown(ScreenGlanceError::Case::captureFailed);
        return ErrorBanner::of(presentationOf(std::make_exception_ptr(unknown)), retry);
    }
}

} // namespace

ScreenGlance::ScreenGlance(Services services, QObject *parent)
    : QObject(parent)
    , m_services(services)
{}

void ScreenGlance::glance(Then then)
{
    if (!isOffered() || isGlancing())
        return;
    m_services.companion.transition(CompanionState::thinking);
    m_services.companion.say(u"Taking a quick look at your screen…"_s, 3s);
    m_task = TaskHandle::start(
        [self = QPointer(this), then](std::stop_token stop) { return look(self, then, std::move(stop)); });
}

void ScreenGlance::cancel()
{
    if (!isGlancing())
        return;
    m_task = {};
    m_services.companion.reset();
    m_services.companion.clearBubble();
}

QCoro::Task<> ScreenGlance::look(QPointer<ScreenGlance> self, Then then, std::stop_token stop)
{
    QString text;
    std::exception_ptr failure;
    try {
        const QString read = co_await self->m_services.screen->captureText(stop);
        text = read;
    } catch (...) {
        failure = std::current_exception();
    }
    if (!self || stop.stop_requested())
        co_return;
    if (failure)
        self->fail(failure, then);
    else
        self->take(text, then);
}

void ScreenGlance::take(const QString &text, Then then)
{
    const DocumentText::Cut cut = DocumentText::cut(text, m_services.settings.maxExtractedCharacters());
    m_services.companion.reset();
    // By this name the chat is known to hold text from the screen.
    const ImportedAttachment attachment{.id = QUuid::createUuid(),
                                        .filename = u"What's on your screen"_s,
                                        .fileExtension = u"screen"_s,
                                        .fileSizeBytes = text.toUtf8().size(),
                                        .text = cut.text,
                                        .wasTruncated = cut.wasTruncated};
    if (then == Then::ask)
        m_services.companion.say(u"Got it. Ask me anything about what you're looking at."_s, 6s);
    else
        m_services.companion.clearBubble();
    Q_EMIT found(attachment, then);
}

void ScreenGlance::fail(const std::exception_ptr &error, Then then)
{
    m_services.companion.reset();
    m_services.companion.clearBubble();
    m_services.banner.show(bannerOf(error, then == Then::summarize ? ErrorBanner::Retry::glanceAndSummarize
                                                                   : ErrorBanner::Retry::glance));
}

} // namespace morvane
