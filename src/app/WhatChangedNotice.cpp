#include "app/WhatChangedNotice.h"

#include "persistence/SettingsRepository.h"
#include "utils/text/DesktopWords.h"
#include "utils/text/Product.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString decidedKey = u"didDecideWhatChangedNotice.v1"_s;
const QString showKey = u"showWhatChangedNotice.v1"_s;

} // namespace

void WhatChangedNotice::decideOnce(SettingsRepository &defaults, bool usedBefore)
{
    if (defaults.boolean(decidedKey))
        return;
    defaults.setBoolean(showKey, usedBefore);
    defaults.setBoolean(decidedKey, true);
    defaults.flush();
}

bool WhatChangedNotice::isDue(const SettingsRepository &defaults)
{
    return defaults.boolean(showKey).value_or(false);
}

void WhatChangedNotice::wasRead(SettingsRepository &defaults)
{
    defaults.setBoolean(showKey, false);
}

QString WhatChangedNotice::title()
{
    return u"What changed in "_s + Product::name;
}

QStringList WhatChangedNotice::lines()
{
    const QString name(Product::name);
    const QStringView device = DesktopWords::here().device;
    return {
        name + u" is one thing now: a private chat for your %1."_s.arg(device),
        u"Telegram, Email, Code, Shopping, Routines, Learn, Markets, News and the other pages have left this "
        "app. They are becoming apps of their own. Nothing of yours was sent anywhere when they went."_s,
        u"Your chats, your memory notes and your instructions are all still here."_s,
        u"The files those pages kept on this %1 have been deleted, with their settings. The Telegram data "
        "this %1 downloaded and the pictures Studio made are still here; Settings > Privacy > Delete All "
        "Local "
        "Data removes those whenever you want."_s.arg(device),
        u"If you used Telegram in "_s + name +
            u", open Telegram somewhere else and end this %1's session in Telegram's own Settings > Devices. "
            "Only you can do that."_s.arg(device),
    };
}

} // namespace morvane
