#include "view_models/chat/BannerDesk.h"

#include "view_models/companion/CompanionViewModel.h"

namespace morvane {

using namespace std::chrono_literals;

BannerDesk::BannerDesk(CompanionViewModel &companion, QObject *parent)
    : QObject(parent)
    , m_companion(companion)
{}

void BannerDesk::show(const std::exception_ptr &error, ErrorBanner::Retry retry)
{
    set(ErrorBanner::of(presentationOf(error), retry));
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
