#pragma once

#include <QDate>

namespace morvane {

class SettingsRepository;

// How often the product's own search was used on the present day and in the present month.
namespace SearchCounters {

// `today` by the person's calendar. Another day or month than the stored one starts at 1.
void raise(SettingsRepository &repository, const QDate &today);

} // namespace SearchCounters

} // namespace morvane
