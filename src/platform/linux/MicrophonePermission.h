#pragma once

#include "audio/AudioPermitting.h"

#include <QDBusConnection>
#include <QString>

#include <optional>

namespace morvane {

// A program that is installed as any other may listen, and recognition stays in it. In a sandbox its
// description says whether it reaches the sound server; the person is asked by the device portal where that
// serves a sandbox, and where it doesn't, the sandbox has decided. GUI thread.
class MicrophonePermission final : public AudioPermitting {
public:
    struct Places {
        QString sandbox = QStringLiteral("/.flatpak-info"); // there in a sandbox alone
        std::optional<QDBusConnection> bus = std::nullopt;  // absent: the session's
    };

    MicrophonePermission()
        : MicrophonePermission(Places{})
    {}
    explicit MicrophonePermission(Places places);

    [[nodiscard]] States states() const override;
    [[nodiscard]] QCoro::Task<PermissionState> requestMicrophone(std::stop_token stop) override;
    [[nodiscard]] QCoro::Task<PermissionState> requestSpeechRecognition(std::stop_token stop) override;

private:
    const Places m_places;
    bool m_isGranted = false; // by the person, for this run; a refusal is asked of the portal again
};

} // namespace morvane
