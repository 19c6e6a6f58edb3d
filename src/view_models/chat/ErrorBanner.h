#pragma once

#include "utils/text/UserPresentableError.h"

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace morvane {

// The error shown above the composer: one sentence, what the server said, a suggestion, and what can be done
// about it.
struct ErrorBanner {
    Q_GADGET
    QML_VALUE_TYPE(errorBanner)
    Q_PROPERTY(QString message MEMBER message)
    Q_PROPERTY(QString suggestion MEMBER suggestion)
    Q_PROPERTY(QString quotation MEMBER quotation)
    Q_PROPERTY(bool retryable MEMBER retryable)
    Q_PROPERTY(bool isNotice MEMBER isNotice)
    Q_PROPERTY(bool mayRaiseReplyLimit READ mayRaiseReplyLimit)
    Q_PROPERTY(bool mayRestartLocalModel READ mayRestartLocalModel)
    Q_PROPERTY(bool mayOpenVoiceSettings READ mayOpenVoiceSettings)
    Q_PROPERTY(bool mayOpenAbilities READ mayOpenAbilities)
    Q_PROPERTY(bool mayOpenKeyboardSettings READ mayOpenKeyboardSettings)

public:
    // What the Retry button runs again.
    enum class Retry { lastChatTurn, save, newChat, keepGhost, glance, glanceAndSummarize };
    // A remedy offered beside it.
    enum class Recovery {
        none,
        openScreenRecordingSettings,
        relaunchForScreenRecording,
        restartLocalModel,
        raiseReplyLimit,
        openVoiceSettings,
        openAbilities,
        openKeyboardSettings
    };

    QString message;
    QString suggestion; // empty for none
    bool retryable = false;
    Recovery recovery = Recovery::none;
    Retry retry = Retry::lastChatTurn;
    QString quotation;     // what the server says; empty for nothing
    bool isNotice = false; // nothing went wrong

    bool operator==(const ErrorBanner &) const = default;

    [[nodiscard]] bool mayRaiseReplyLimit() const { return recovery == Recovery::raiseReplyLimit; }
    [[nodiscard]] bool mayRestartLocalModel() const { return recovery == Recovery::restartLocalModel; }
    [[nodiscard]] bool mayOpenVoiceSettings() const { return recovery == Recovery::openVoiceSettings; }
    [[nodiscard]] bool mayOpenAbilities() const { return recovery == Recovery::openAbilities; }
    [[nodiscard]] bool mayOpenKeyboardSettings() const { return recovery == Recovery::openKeyboardSettings; }

    [[nodiscard]] static ErrorBanner of(const ErrorPresentation &presentation, Retry retry)
    {
        return {.message = presentation.message,
                .suggestion = presentation.suggestion.value_or(QString()),
                .retryable = presentation.retryable,
                .retry = retry,
                .quotation = presentation.quotation};
    }
};

} // namespace morvane
