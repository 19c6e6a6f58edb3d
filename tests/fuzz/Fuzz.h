#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

namespace morvane {

// What each target defines: takes any bytes, and requires what must hold of them.
void fuzz(QByteArrayView input);

// Ends the program, which is a find, where a rule is broken.
void require(bool holds);

// Whether what was read is also judged: one input in eight. Cryptography takes a thousand times as long as
// reading, and would leave the readers with few runs.
[[nodiscard]] bool isJudged(QByteArrayView input);

} // namespace morvane
