#pragma once

#include <QString>
#include <QStringList>

namespace morvane {

// What people who used an older build are told once: which pages have left, and what became of their data.
namespace WhatChangedNotice {

[[nodiscard]] QString title();
[[nodiscard]] QStringList lines();

} // namespace WhatChangedNotice

} // namespace morvane
