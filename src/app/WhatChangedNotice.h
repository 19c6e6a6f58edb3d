#pragma once

#include <QString>
#include <QStringList>

namespace morvane {

class SettingsRepository;

// What people who used an older build are told once: which pages have left, and what became of their data.
namespace WhatChangedNotice {

[[nodiscard]] QString title();
[[nodiscard]] QStringList lines();

// Who used an older build learns once what went; a first start has nothing to be told. On disk at once.
void decideOnce(SettingsRepository &defaults, bool usedBefore);
[[nodiscard]] bool isDue(const SettingsRepository &defaults);
void wasRead(SettingsRepository &defaults);

} // namespace WhatChangedNotice

} // namespace morvane
