#pragma once

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace morvane {

// Where a find stands in the open chat.
struct FindPlace {
    Q_GADGET
    QML_VALUE_TYPE(findPlace)
    Q_PROPERTY(int row MEMBER row)

public:
    int row = -1;    // of the message; -1 for no find
    int block = 0;   // of the reply; 0 in what the person said
    int ordinal = 0; // among the finds of the block, from 0

    bool operator==(const FindPlace &) const = default;
};

} // namespace morvane
