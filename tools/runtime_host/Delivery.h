#pragma once

#include "loopback/Exchange.h"
#include "loopback/HoldPoint.h"
#include "runtime_host/runtime/PracticeFolder.h"

#include <span>

namespace morvane {

// How an archive's bytes come, and where the release address leads.
class Delivery {
public:
    struct Kind {
        QLatin1StringView name;
        QLatin1StringView summary;
    };
    [[nodiscard]] static std::span<const Kind> kinds();
    [[nodiscard]] static bool has(const QString &kind);

    Delivery(QByteArray archive, PracticeFolder folder)
        : m_archive(std::move(archive))
        , m_folder(std::move(folder))
    {}

    void setKind(const QString &kind);

    // Where the release address leads; `usual` is this host's own storage.
    Work redirect(Exchange &exchange, QByteArray usual, QByteArray self);

    // The storage's answer.
    Work deliver(Exchange &exchange);
    void goOn() { m_holdPoint.goOn(); }

private:
    [[nodiscard]] bool plays(QLatin1StringView kind) const { return m_kind == kind; }
    [[nodiscard]] qint64 startOf(const Request &request) const;
    Work begin(Exchange &exchange, qint64 start, qint64 end);
    Work pour(Exchange &exchange, qint64 start);
    Work pourWithoutEnd(Exchange &exchange);

    QByteArray m_archive;
    PracticeFolder m_folder; // for a line when it holds
    QString m_kind = QStringLiteral("good");
    bool m_wasCut = false;
    HoldPoint m_holdPoint;
};

} // namespace morvane
