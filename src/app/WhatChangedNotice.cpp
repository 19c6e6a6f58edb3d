#include "app/WhatChangedNotice.h"

#include "utils/text/Product.h"

namespace morvane {

using namespace Qt::StringLiterals;

QString WhatChangedNotice::title()
{
    return u"What changed in "_s + Product::name;
}

QStringList WhatChangedNotice::lines()
{
    const QString name(Product::name);
    return {
        name + u" is one thing now: a private chat for your Mac."_s,
        u"Telegram, Email, Code, Shopping, Routines, Learn, Markets, News and the other pages have left this "
        u"app. "
        "They are becoming apps of their own. Nothing of yours was sent anywhere when they went."_s,
        u"Your chats, your memory notes and your instructions are all still here."_s,
        u"The files those pages kept on this Mac have been deleted, with their settings. The Telegram data "
        u"this Mac "
        "downloaded and the pictures Studio made are still here; Settings > Privacy > Delete All Local Data "
        "removes "
        "those whenever you want."_s,
        u"If you used Telegram in "_s + name +
            u", open Telegram somewhere else and end this Mac's session in Telegram's own Settings > "
            u"Devices. Only "
            "you can do that."_s,
    };
}

} // namespace morvane
