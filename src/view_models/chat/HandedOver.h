#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

class QMimeData;

namespace morvane {

// What a person pasted or dropped, as far as it is of use here. Nothing of it is decoded.
struct HandedOver {
    Q_GADGET
    QML_VALUE_TYPE(handedOver)
    Q_PROPERTY(QString text MEMBER text)

public:
    // What counts where there is a picture as well as text: a program that copies cells gives both.
    enum class Order { textFirst, pictureFirst };

    QList<QUrl> files; // those of this machine
    QByteArray image;  // its file, of any format; fetched only when it is what counts
    QString text;
    bool isConcealed = false; // a password manager says that it is a secret

    [[nodiscard]] static HandedOver of(const QMimeData &data, Order order);

    // A field lays text out as a whole: one of more UTF-16 units than this is of use only as an attachment.
    static constexpr qsizetype longestTyped = 20'000;
    [[nodiscard]] static bool isTooLong(const QString &text) { return text.size() > longestTyped; }

    // Whether there is anything in it that can be attached, without fetching it.
    [[nodiscard]] static bool holdsAttachment(const QMimeData &data, Order order);
};

} // namespace morvane
