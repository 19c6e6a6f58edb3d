#include "services/ScreenGlanceService.h"

#include "async/CancelledError.h"
#include "services/ScreenCapturing.h"
#include "services/ScreenGlanceError.h"
#include "services/TextRecognizing.h"
#include "utils/log/Log.h"

#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;
using Case = ScreenGlanceError::Case;

namespace {

constexpr auto category = Log::Category::Windowing;

} // namespace

ScreenGlanceService::ScreenGlanceService(ScreenCapturing &capture, TextRecognizing &recognizer,
                                         QObject *parent)
    : QObject(parent)
    , m_capture(capture)
    , m_recognizer(recognizer)
{}

void ScreenGlanceService::requireAccess()
{
    if (m_capture.hasAccess())
        return;
    if (m_hasRequestedThisLaunch || m_knownBlindThisLaunch)
        throw ScreenGlanceError(Case::needsRelaunch);
    Log::info(category, "Requesting screen recording permission (user-initiated glance)"_L1);
    m_hasRequestedThisLaunch = true;
    m_capture.requestAccess();
    throw ScreenGlanceError(Case::permissionNeeded);
}

QCoro::Task<QString> ScreenGlanceService::captureText(std::stop_token stop)
{
    return look(this, std::move(stop));
}

QCoro::Task<QString> ScreenGlanceService::look(Self self, std::stop_token stop)
{
    self->requireAccess();
    if (self->m_isCapturing)
        throw ScreenGlanceError(Case::captureFailed);
    self->m_isCapturing = true;
    Log::info(category, "Screen glance capture (explicit user action)"_L1);
    QString text;
    std::exception_ptr failure;
    try {
        const QString found = co_await read(self, stop);
        text = found;
    } catch (...) {
        failure = std::current_exception();
    }
    if (self)
        self->m_isCapturing = false;
    if (!self || stop.stop_requested())
        throw CancelledError();
    if (failure)
        self->explain(failure);
    co_return text;
}

QCoro::Task<QString> ScreenGlanceService::read(Self self, std::stop_token stop)
{
    if (self->m_capture.isHiddenByFullScreen())
        throw ScreenGlanceError(Case::hiddenByFullScreen);
    std::shared_ptr<const ScreenPicture> picture = co_await self->m_capture.capture(stop);
    throwIfStopped(stop);
    if (!self)
        throw CancelledError();
    const auto observations = co_await self->m_recognizer.recognize(std::move(picture), stop);
    const QString text = ScreenText::of(observations);
    if (text.isEmpty())
        throw ScreenGlanceError(Case::noTextFound);
    co_return text;
}

void ScreenGlanceService::explain(const std::exception_ptr &failure)
{
    using Reason = ScreenCaptureFailure::Reason;
    try {
        std::rethrow_exception(failure);
    } catch (const ScreenGlanceError &) {
        throw;
    } catch (const CancelledError &) {
        throw;
    } catch (const ScreenCaptureFailure &error) {
        Log::error(category, "Screen capture failed after a passing preflight: %s"_L1,
                   {QString::fromUtf8(error.what())});
        if (error.reason == Reason::refused)
            throw ScreenGlanceError(Case::permissionNeeded);
        if (error.reason == Reason::failed)
            throw ScreenGlanceError(Case::captureFailed);
        if (error.reason == Reason::absent)
            throw ScreenGlanceError(Case::noneHere);
        m_knownBlindThisLaunch = true;
        throw ScreenGlanceError(Case::needsRelaunch);
    } catch (const std::exception &error) {
        Log::error(category, "Screen text recognition failed: %s"_L1, {QString::fromUtf8(error.what())});
        throw ScreenGlanceError(Case::captureFailed);
    }
}

} // namespace morvane
