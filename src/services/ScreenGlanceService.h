#pragma once

#include "services/ScreenGlancing.h"

#include <QObject>
#include <QPointer>

#include <exception>

namespace morvane {

class ScreenCapturing;
class TextRecognizing;

// One picture of the main display turned into text, each time somebody asked for it. Neither the picture nor
// the text is kept. GUI thread.
class ScreenGlanceService final : public QObject, public ScreenGlancing {
    Q_OBJECT
public:
    // Both outlive this object.
    ScreenGlanceService(ScreenCapturing &capture, TextRecognizing &recognizer, QObject *parent = nullptr);

    [[nodiscard]] QCoro::Task<QString> captureText(std::stop_token stop) override;

    [[nodiscard]] bool isCapturing() const { return m_isCapturing; }
    // The desktop was had ask for its permission in this run.
    [[nodiscard]] bool hasRequestedThisLaunch() const { return m_hasRequestedThisLaunch; }
    // The permission comes too late for this run.
    [[nodiscard]] bool knownBlindThisLaunch() const { return m_knownBlindThisLaunch; }

private:
    using Self = QPointer<ScreenGlanceService>;

    static QCoro::Task<QString> look(Self self, std::stop_token stop);
    static QCoro::Task<QString> read(Self self, std::stop_token stop);
    void requireAccess();
    [[noreturn]] void explain(const std::exception_ptr &failure);

    ScreenCapturing &m_capture;
    TextRecognizing &m_recognizer;
    bool m_isCapturing = false;
    bool m_hasRequestedThisLaunch = false;
    bool m_knownBlindThisLaunch = false;
};

} // namespace morvane
