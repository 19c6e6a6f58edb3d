#pragma once

#include "async/Clock.h"
#include "models/Conversation.h"
#include "persistence/ConversationRepository.h"

#include <QGuiApplication>
#include <QQuickStyle>

#include <benchmark/benchmark.h>

namespace morvane {

// What the benchmarks of the window share.

// The benchmarks of a program, with windows that need no display.
inline int runOffScreen(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    qputenv("QT_LOGGING_RULES", "*.info=false");
    QQuickStyle::setStyle(QStringLiteral("Basic"));
    QGuiApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

// A figure that is not the time of an iteration.
inline void report(benchmark::State &state, double value, const char *unit)
{
    state.counters["value"] = value;
    state.SetLabel(unit);
}

// Adds so many messages to a chat, of that text with its "NUMBER" counted up, or of one short line each, and
// saves.
inline void fill(ConversationRepository &repository, Conversation &conversation, Clock &clock, int messages,
                 const QString &text = {})
{
    for (int i = 0; i < messages; ++i) {
        conversation.append(repository.makeMessage(
            {.id = QUuid::createUuid(),
             .role = i % 2 ? MessageRole::assistant : MessageRole::user,
             .content = text.isEmpty() ? QStringLiteral("Message number %1, a line of chat.").arg(i)
                                       : QString(text).replace(QStringLiteral("NUMBER"), QString::number(i)),
             .createdAt = clock.now(),
             .status = MessageStatus::delivered}));
        repository.context().insert(conversation.messages().back());
    }
    repository.save();
}

} // namespace morvane
