#include "view_models/ShellViewModel.h"

#include "persistence/SettingsStore.h"
#include "utils/text/Product.h"

#include <QClipboard>
#include <QGuiApplication>

#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;

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
}

QString ShellViewModel::productName() const
{
    return Product::name;
}

bool ShellViewModel::isDark() const
{
    switch (m_settings.appearance()) {
    case AppAppearance::system:
        return m_systemDark;
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

void ShellViewModel::setSystemDark(bool dark)
{
    if (m_systemDark == dark)
        return;
    m_systemDark = dark;
    Q_EMIT appearanceChanged();
}

double ShellViewModel::textScale() const
{
    switch (m_settings.chatTextSize()) {
    case ChatTextSize::small:
        return 0.9;
    case ChatTextSize::medium:
        return 1.0;
    case ChatTextSize::large:
        return 1.15;
    }
    return 1.0;
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
