#pragma once

#include "view_models/chat/ErrorBanner.h"

#include <QObject>

#include <exception>
#include <optional>

namespace morvane {

class CompanionViewModel;

// Holds the one error that is shown above the composer. GUI thread.
class BannerDesk : public QObject {
    Q_OBJECT
public:
    // `companion` outlives this object.
    explicit BannerDesk(CompanionViewModel &companion, QObject *parent = nullptr);

    [[nodiscard]] const std::optional<ErrorBanner> &banner() const { return m_banner; }

    // In place of any former one; the companion shows it too, for a moment.
    void show(const std::exception_ptr &error, ErrorBanner::Retry retry = ErrorBanner::Retry::lastChatTurn);
    void dismiss() { set(std::nullopt); }

Q_SIGNALS:
    void changed();

private:
    void set(std::optional<ErrorBanner> banner);

    CompanionViewModel &m_companion;
    std::optional<ErrorBanner> m_banner;
};

} // namespace morvane
