#include "view_models/ShellViewModel.h"

#include "persistence/SettingsStore.h"
#include "utils/text/Product.h"
#include "view_models/AccentInk.h"

#include <QClipboard>
#include <QGuiApplication>

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// The grounds that a colour of the desktop has it hardest on: a message's bubble, and a gallery's brightest
// end.
constexpr QRgb darkestLightGround = 0xffe9eaf2;
constexpr QRgb lightestDarkGround = 0xff2b2c37;
constexpr QRgb lightestBackdrop = 0xff25472f;

} // namespace

ShellViewModel::ShellViewModel(SettingsStore &settings, QString startupError, QString startupSuggestion,
                               QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_startupError(std::move(startupError))
    , m_startupSuggestion(std::move(startupSuggestion))
{
    connect(&settings, &SettingsStore::appearanceChanged, this, &ShellViewModel::appearanceChanged);
    connect(&settings, &SettingsStore::galleryBackdropChanged, this, &ShellViewModel::appearanceChanged);
    connect(&settings, &SettingsStore::chatTextSizeChanged, this, &ShellViewModel::textScaleChanged);
    connect(&settings, &SettingsStore::zoomPercentChanged, this, &ShellViewModel::textScaleChanged);
    connect(&settings, &SettingsStore::reduceAnimationChanged, this, &ShellViewModel::reduceAnimationChanged);
}

QString ShellViewModel::productName() const
{
    return Product::name;
}

bool ShellViewModel::isDark() const
{
    switch (m_settings.appearance()) {
    case AppAppearance::system:
        return m_look.isDark;
    case AppAppearance::light:
        return false;
    case AppAppearance::dark:
    case AppAppearance::gallery:
        return true;
    }
    return false;
}

QStringList ShellViewModel::backdrops()
{
    return {u"dusk"_s, u"lagoon"_s, u"forest"_s, u"ember"_s, u"night"_s};
}

QString ShellViewModel::backdrop() const
{
    const QString chosen = m_settings.galleryBackdrop();
    return backdrops().contains(chosen) ? chosen : backdrops().constFirst();
}

void ShellViewModel::setDesktopLook(const DesktopLook &look)
{
    if (m_look == look)
        return;
    m_look = look;
    Q_EMIT appearanceChanged();
    Q_EMIT reduceAnimationChanged();
}

QString ShellViewModel::accent() const
{
    if (!m_look.accent)
        return {};
    const auto [red, green, blue] = *m_look.accent;
    const QColor wanted =
        QColor::fromRgbF(static_cast<float>(red), static_cast<float>(green), static_cast<float>(blue));
    const QRgb ground = !isDark()                                           ? darkestLightGround
                        : m_settings.appearance() == AppAppearance::gallery ? lightestBackdrop
                                                                            : lightestDarkGround;
    return AccentInk::readable(wanted, QColor(ground), hasHighContrast() ? 7 : 4.5).name();
}

bool ShellViewModel::reducesAnimation() const
{
    return m_look.hasReducedMotion || m_settings.reduceAnimation();
}

QList<int> ShellViewModel::zooms()
{
    return {80, 90, 100, 110, 125, 150, 175, 200};
}

int ShellViewModel::zoom() const
{
    const QList<int> steps = zooms();
    const auto wanted = std::clamp<std::int64_t>(m_settings.zoomPercent(), steps.first(), steps.last());
    const auto distance = [wanted](int step) { return std::abs(step - wanted); };
    return *std::ranges::min_element(steps, {}, distance);
}

void ShellViewModel::zoomBy(int steps)
{
    const QList<int> all = zooms();
    const qsizetype wanted = all.indexOf(zoom()) + steps;
    m_settings.setZoomPercent(steps == 0 ? 100 : all[std::clamp<qsizetype>(wanted, 0, all.size() - 1)]);
}

double ShellViewModel::textScale() const
{
    const double zoomed = zoom() / 100.0;
    switch (m_settings.chatTextSize()) {
    case ChatTextSize::small:
        return 0.9 * zoomed;
    case ChatTextSize::medium:
        return zoomed;
    case ChatTextSize::large:
        return 1.15 * zoomed;
    }
    return zoomed;
}

void ShellViewModel::setKeychainNotice(const QString &notice)
{
    m_keychainNotice = notice;
    Q_EMIT keychainNoticeChanged();
}

void ShellViewModel::setUnsealedNotice(const QString &notice)
{
    if (m_unsealedNotice == notice)
        return;
    m_unsealedNotice = notice;
    Q_EMIT unsealedNoticeChanged();
}

void ShellViewModel::ask(const QString &title, const QString &text, const QStringList &buttons,
                         std::function<void(int)> answered)
{
    m_question = {title, text, buttons, std::move(answered)};
    Q_EMIT questionChanged();
}

void ShellViewModel::answerQuestion(int button)
{
    const Question question = std::exchange(m_question, {});
    Q_EMIT questionChanged();
    if (question.answered)
        question.answered(button);
}

void ShellViewModel::tell(const QString &title, const QString &text, const QStringList &buttons,
                          std::function<void(int)> answered)
{
    m_notices.push_back({title, text, buttons, std::move(answered)});
    Q_EMIT noticeChanged();
}

void ShellViewModel::answerNotice(int button)
{
    if (m_notices.empty())
        return;
    const auto answered = m_notices.front().answered;
    m_notices.pop_front();
    Q_EMIT noticeChanged();
    if (answered)
        answered(button);
}

void ShellViewModel::copy(const QString &text) const
{
    QGuiApplication::clipboard()->setText(text);
}

void ShellViewModel::openLink(const QString &address)
{
    const QUrl url(address, QUrl::StrictMode);
    if (url.isValid() && (url.scheme() == "http"_L1 || url.scheme() == "https"_L1))
        Q_EMIT linkRequested(url);
}

} // namespace morvane
