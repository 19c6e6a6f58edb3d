#pragma once

#include "async/Clock.h"
#include "services/TextRecognizing.h"

#include <QStringList>

namespace morvane {

class Work;

// Has `program` read each picture, in a process of its own that lives no longer than that.
//
// A process for three reasons. What a web page or a video call shows is chosen by others, and the recogniser
// is a large library that may break on it. It leaves copies of the picture all over its memory, which nobody
// could wipe but the system, as it does when a process ends. And a process can be kept from ever writing a
// file, and be ended when nobody waits any more.
//
// The picture is handed over as memory that no file stands behind, and wiped when the answer is there.
class ScreenTextRecognizer final : public TextRecognizing {
public:
    static constexpr std::chrono::seconds longestRun{60};

    // `languages` as ScreenLanguages::codesFor gives them. `work` and `clock` outlive this object, which
    // outlives its calls.
    ScreenTextRecognizer(Work &work, Clock &clock, QString program, QStringList languages);

    [[nodiscard]] QCoro::Task<std::vector<TextObservation>>
    recognize(std::shared_ptr<const ScreenPicture> picture, std::stop_token stop) override;

private:
    Work &m_work;
    Clock &m_clock;
    QString m_program;
    QStringList m_languages;
};

} // namespace morvane
