#pragma once

#include <QObject>
#include <QString>
#include <QUuid>

namespace morvane {

// A notification as the desktop shows it. All of it may be read by whoever stands before the screen.
struct DesktopNotice {
    QString key; // what it is about: a second one of a key takes the first one's place
    QString title;
    QString body = {};        // plain text; may be empty
    QUuid chat = {};          // what a click opens; null: the window as it is
    bool isPassing = false;   // the desktop keeps no list of it
    bool isWaitedFor = false; // something goes on only once the person has come

    bool operator==(const DesktopNotice &) const = default;
};

// Where the desktop shows notifications. Without one nothing appears. Never blocks. GUI thread.
class NotificationPosting : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    virtual void post(const DesktopNotice &notice) = 0;
    virtual void withdraw(const QString &key) = 0; // nothing for one that isn't shown

Q_SIGNALS:
    void chosen(const QString &key);
    void dismissed(const QString &key); // by the person or by the desktop
};

} // namespace morvane
