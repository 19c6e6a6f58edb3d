#pragma once

#include "models/DesktopLook.h"
#include "view_models/settings/LaunchAtLoginViewModel.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

#include <deque>
#include <functional>

namespace morvane {

class SettingsStore;

// What the window as a whole shows: its colours and sizes, what it asks, and what went wrong at start.
class ShellViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(QString productName READ productName CONSTANT)
    Q_PROPERTY(bool dark READ isDark NOTIFY appearanceChanged)
    // What is drawn behind the window in the gallery appearance: one of `backdrops`, whatever the setting
    // says.
    Q_PROPERTY(QString backdrop READ backdrop NOTIFY appearanceChanged)
    Q_PROPERTY(QStringList backdrops READ backdrops CONSTANT)
    // The desktop's own, as a name that stands out from every ground of the window; empty for none.
    Q_PROPERTY(QString accent READ accent NOTIFY appearanceChanged)
    Q_PROPERTY(bool highContrast READ hasHighContrast NOTIFY appearanceChanged)
    // At the person's wish or the desktop's.
    Q_PROPERTY(bool reduceAnimation READ reducesAnimation NOTIFY reduceAnimationChanged)
    Q_PROPERTY(QList<int> zooms READ zooms CONSTANT)                      // percent, rising
    Q_PROPERTY(int zoom READ zoom NOTIFY textScaleChanged)                // one of them
    Q_PROPERTY(double textScale READ textScale NOTIFY textScaleChanged)   // 0.9, 1 or 1.15, zoomed
    Q_PROPERTY(QString startupError READ startupError CONSTANT)           // empty for none
    Q_PROPERTY(QString startupSuggestion READ startupSuggestion CONSTANT) // empty for none
    // Where the key to the person's data is kept, when that needs saying; empty otherwise.
    Q_PROPERTY(QString keychainNotice READ keychainNotice NOTIFY keychainNoticeChanged)
    // Why what is written now is stored readable, for as long as it is; empty otherwise.
    Q_PROPERTY(QString unsealedNotice READ unsealedNotice NOTIFY unsealedNoticeChanged)
    Q_PROPERTY(morvane::LaunchAtLoginViewModel *launchAtLogin READ launchAtLogin CONSTANT) // may be null
    // A question that the person has to answer before the application goes on; no title for none.
    Q_PROPERTY(QString questionTitle READ questionTitle NOTIFY questionChanged)
    Q_PROPERTY(QString questionText READ questionText NOTIFY questionChanged)
    Q_PROPERTY(QStringList questionButtons READ questionButtons NOTIFY questionChanged)
    // What stands in the window until the person has answered it, and lets them go on; no title for none.
    Q_PROPERTY(QString noticeTitle READ noticeTitle NOTIFY noticeChanged)
    Q_PROPERTY(QString noticeText READ noticeText NOTIFY noticeChanged)
    Q_PROPERTY(QStringList noticeButtons READ noticeButtons NOTIFY noticeChanged)

public:
    ShellViewModel(SettingsStore &settings, QString startupError, QString startupSuggestion,
                   QObject *parent = nullptr);

    [[nodiscard]] QString productName() const;
    [[nodiscard]] bool isDark() const;
    [[nodiscard]] QString backdrop() const;
    [[nodiscard]] static QStringList backdrops();
    // What the desktop prefers. Its darkness counts while the appearance follows the system.
    void setDesktopLook(const DesktopLook &look);
    [[nodiscard]] QString accent() const;
    [[nodiscard]] bool hasHighContrast() const { return m_look.hasHighContrast; }
    [[nodiscard]] bool reducesAnimation() const;

    [[nodiscard]] static QList<int> zooms();
    // The step that the setting stands for: the nearest one, whatever it holds.
    [[nodiscard]] int zoom() const;
    // Steps up or down from it, and stays at the ends; none leads back to the usual size.
    Q_INVOKABLE void zoomBy(int steps);
    [[nodiscard]] double textScale() const;
    [[nodiscard]] const QString &startupError() const { return m_startupError; }
    [[nodiscard]] const QString &startupSuggestion() const { return m_startupSuggestion; }

    [[nodiscard]] const QString &keychainNotice() const { return m_keychainNotice; }
    void setKeychainNotice(const QString &notice);
    [[nodiscard]] const QString &unsealedNotice() const { return m_unsealedNotice; }
    void setUnsealedNotice(const QString &notice);
    [[nodiscard]] LaunchAtLoginViewModel *launchAtLogin() const { return m_launchAtLogin; }
    // Before anything is bound to it.
    void setLaunchAtLogin(LaunchAtLoginViewModel *launchAtLogin) { m_launchAtLogin = launchAtLogin; }
    [[nodiscard]] const QString &questionTitle() const { return m_question.title; }
    [[nodiscard]] const QString &questionText() const { return m_question.text; }
    [[nodiscard]] const QStringList &questionButtons() const { return m_question.buttons; }

    [[nodiscard]] QString noticeTitle() const { return notice().title; }
    [[nodiscard]] QString noticeText() const { return notice().text; }
    [[nodiscard]] QStringList noticeButtons() const { return notice().buttons; }

    // Shows a question in place of any former one, which stays unanswered. `answered` gets the index of the
    // button, or -1 when the question was closed.
    void ask(const QString &title, const QString &text, const QStringList &buttons,
             std::function<void(int)> answered);
    Q_INVOKABLE void answerQuestion(int button);

    // Shows a notice once the former ones are answered. `answered` gets the index of the button.
    void tell(const QString &title, const QString &text, const QStringList &buttons,
              std::function<void(int)> answered);
    Q_INVOKABLE void answerNotice(int button);

    // Puts plain text on the clipboard.
    Q_INVOKABLE void copy(const QString &text) const;
    // A link that the person clicked. Only addresses of the web are passed on.
    Q_INVOKABLE void openLink(const QString &address);

Q_SIGNALS:
    void appearanceChanged();
    void textScaleChanged();
    void reduceAnimationChanged();
    void keychainNoticeChanged();
    void unsealedNoticeChanged();
    void questionChanged();
    void noticeChanged();
    void linkRequested(const QUrl &address);
    void welcomeRequested();  // the welcome is wanted, also once more
    void welcomeLeft();       // to its end or not
    void settingsRequested(); // something outside the window asks for the settings page
    void voiceSettingsRequested();
    void replyLimitRequested(); // the settings page is wanted at the longest reply
    void abilitiesRequested();  // the settings page of the abilities is wanted
    void keyboardSettingsRequested();

private:
    SettingsStore &m_settings;
    DesktopLook m_look;
    QString m_startupError;
    QString m_startupSuggestion;
    QString m_keychainNotice;
    QString m_unsealedNotice;
    LaunchAtLoginViewModel *m_launchAtLogin = nullptr;
    struct Question {
        QString title;
        QString text;
        QStringList buttons;
        std::function<void(int)> answered;
    };
    [[nodiscard]] Question notice() const { return m_notices.empty() ? Question{} : m_notices.front(); }

    Question m_question;
    std::deque<Question> m_notices; // the first one is shown
};

} // namespace morvane
