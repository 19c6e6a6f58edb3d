#include "view_models/chat/BannerDesk.h"

#include "ai/contract/ProviderError.h"
#include "view_models/companion/CompanionViewModel.h"

#include <algorithm>
#include <initializer_list>

namespace morvane {

using namespace std::chrono_literals;

namespace {

using Plain = ProviderError::Plain;

bool isOneOf(const std::exception_ptr &error, std::initializer_list<Plain> cases)
{
    try {
        std::rethrow_exception(error);
    } catch (const ProviderError &known) {
        return std::any_of(cases.begin(), cases.end(), [&](Plain one) { return known.is(one); });
    } catch (...) {
        return false;
    }
}

} // namespace

BannerDesk::BannerDesk(CompanionViewModel &companion, QObject *parent)
    : QObject(parent)
    , m_companion(companion)
{}

void BannerDesk::show(const std::exception_ptr &error, ErrorBanner::Retry retry)
{
    ErrorBanner banner = ErrorBanner::of(presentationOf(error), retry);
    banner.recovery = recoveryFrom(error);
    show(std::move(banner));
}

void BannerDesk::show(ErrorBanner banner)
{
    set(std::move(banner));
    m_companion.flash(CompanionState::error, 2s);
}

ErrorBanner::Recovery BannerDesk::recoveryFrom(const std::exception_ptr &error) const
{
    if (isOneOf(error, {Plain::limitSpentThinking}))
        return ErrorBanner::Recovery::raiseReplyLimit;
    const bool isSilent = isOneOf(error, {Plain::networkTimeout, Plain::networkUnavailable});
    return isSilent && m_asksLocalRuntime && m_asksLocalRuntime() ? ErrorBanner::Recovery::restartLocalModel
                                                                  : ErrorBanner::Recovery::none;
}

void BannerDesk::tell(ErrorBanner notice)
{
    notice.isNotice = true;
    set(std::move(notice));
}

void BannerDesk::dismiss(const ErrorBanner &banner)
{
    if (m_banner == banner)
        dismiss();
}

void BannerDesk::set(std::optional<ErrorBanner> banner)
{
    if (m_banner == banner)
        return;
    m_banner = std::move(banner);
    Q_EMIT changed();
}

} // namespace morvane
