#include "view_models/chat/BannerDesk.h"

#include "ai/contract/ProviderError.h"
#include "view_models/companion/CompanionViewModel.h"

namespace morvane {

using namespace std::chrono_literals;

namespace {

bool wasSpentThinking(const std::exception_ptr &error)
{
    try {
        std::rethrow_exception(error);
    } catch (const ProviderError &known) {
        return known.is(ProviderError::Plain::limitSpentThinking);
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
    if (wasSpentThinking(error))
        banner.recovery = ErrorBanner::Recovery::raiseReplyLimit;
    set(std::move(banner));
    m_companion.flash(CompanionState::error, 2s);
}

void BannerDesk::set(std::optional<ErrorBanner> banner)
{
    if (m_banner == banner)
        return;
    m_banner = std::move(banner);
    Q_EMIT changed();
}

} // namespace morvane
