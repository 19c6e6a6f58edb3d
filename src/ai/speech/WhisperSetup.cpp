#include "ai/speech/WhisperSetup.h"

#include "ai/speech/WhisperLanguages.h"
#include "async/Work.h"
#include "persistence/SettingsStore.h"

#include <QStandardPaths>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto longestLook = 10s; // at a disk that may lie behind a network

WhisperSetup::Found foundWith(const QString &modelPath)
{
    return {.program = QStandardPaths::findExecutable(u"whisper-server"_s),
            .modelPath = modelPath,
            .model = modelPath.isEmpty() ? std::nullopt : WhisperModel::read(modelPath)};
}

} // namespace

WhisperSetup::WhisperSetup(SettingsStore &settings, Work &work, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_work(work)
{
    connect(&settings, &SettingsStore::speechModelPathChanged, this, &WhisperSetup::refresh);
    // Without a model there is nothing to look for until Settings asks.
    if (!settings.speechModelPath().isEmpty())
        refresh();
}

bool WhisperSetup::knows(const QLocale &locale) const
{
    const std::optional<QString> code = WhisperLanguages::codeOf(locale);
    return isReady() && code && (m_found.model->knowsManyLanguages || *code == "en"_L1);
}

void WhisperSetup::refresh()
{
    m_looking = TaskHandle::start(
        [self = QPointer(this)](std::stop_token stop) { return look(self, std::move(stop)); });
}

QCoro::Task<> WhisperSetup::look(QPointer<WhisperSetup> self, std::stop_token stop)
{
    try {
        std::function<Found()> looking = [path = self->m_settings.speechModelPath()] {
            return foundWith(path);
        };
        const std::optional<Found> found =
            co_await self->m_work.ask<Found>(std::move(looking), longestLook, stop, Work::Outside::Files);
        if (!self || stop.stop_requested() || !found || self->m_found == *found)
            co_return;
        self->m_found = *found;
        Q_EMIT self->changed();
    } catch (const CancelledError &) {
    }
}

} // namespace morvane
