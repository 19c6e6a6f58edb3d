#pragma once

#include <QProcessEnvironment>

namespace morvane {

// In which a program is killed at its so manieth such call in a folder (see KillAtCall.cpp).
inline QProcessEnvironment killedAtCall(int call, const QString &folder, const char *verbs = "rename sync")
{
    auto environment = QProcessEnvironment::systemEnvironment();
    const QString sanitizer = QStringLiteral("ASAN_OPTIONS");
    environment.insert(QStringLiteral("LD_PRELOAD"), QStringLiteral(MORVANE_KILL_AT_CALL));
    environment.insert(sanitizer, environment.value(sanitizer) + QStringLiteral(":verify_asan_link_order=0"));
    environment.insert(QStringLiteral("MORVANE_KILL_FOLDER"), folder);
    environment.insert(QStringLiteral("MORVANE_KILL_AT"), QString::number(call));
    environment.insert(QStringLiteral("MORVANE_KILL_VERBS"), QString::fromLatin1(verbs));
    return environment;
}

} // namespace morvane
