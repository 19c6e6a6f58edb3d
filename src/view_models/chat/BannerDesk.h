#pragma once

#include "view_models/chat/ErrorBanner.h"

#include <QObject>

#include <exception>
#include <functional>
#include <optional>
#include <utility>

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
    void show(ErrorBanner banner);
    // What is no error; the companion goes on with what it does.
    void tell(ErrorBanner notice);
    void dismiss() { set(std::nullopt); }
    // Only if it is still this one.
    void dismiss(const ErrorBanner &banner);

    // Whether it is the managed runtime that turns go to; asked when one went without an answer.
    void setAsksLocalRuntime(std::function<bool()> asks) { m_asksLocalRuntime = std::move(asks); }

Q_SIGNALS:
    void changed();

private:
    void set(std::optional<ErrorBanner> banner);

    [[nodiscard]] ErrorBanner::Recovery recoveryFrom(const std::exception_ptr &error) const;

    CompanionViewModel &m_companion;
    std::function<bool()> m_asksLocalRuntime; // absent: it never is
    std::optional<ErrorBanner> m_banner;
};

} // namespace morvane
