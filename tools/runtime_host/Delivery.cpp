#include "Delivery.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr Delivery::Kind all[]{
    {"good"_L1, "one redirect, and the archive, whole or from where a range begins"_L1},
    {"direct"_L1, "no redirect"_L1},
    {"wrong-digest"_L1, "one byte is another"_L1},
    {"short"_L1, "the file ends half way and says so"_L1},
    {"long"_L1, "the file goes on behind its end and says so"_L1},
    {"endless"_L1, "bytes of no length that never end"_L1},
    {"cut-once"_L1, "the first connection breaks half way"_L1},
    {"cut-often"_L1, "every connection breaks after a quarter of the archive"_L1},
    {"cut-then-changed"_L1, "the first connection breaks half way; then the file is another"_L1},
    {"no-ranges"_L1, "as cut-once, from a server that gives whole files alone"_L1},
    {"wrong-range"_L1, "as cut-once, and the rest begins a byte later than asked"_L1},
    {"drip"_L1, "a portion now and then, for about ten seconds"_L1},
    {"held"_L1, "waits half way for POST /go-on"_L1},
    {"missing"_L1, "404"_L1},
    {"busy"_L1, "503"_L1},
    {"redirect-http"_L1, "leads to plain http on a host of the internet"_L1},
    {"redirect-elsewhere"_L1, "leads to https on a host that nobody knows"_L1},
    {"redirect-nearby"_L1, "leads to an address of the private network"_L1},
    {"redirect-file"_L1, "leads to a file of this machine"_L1},
    {"redirect-loop"_L1, "leads to itself"_L1},
};

} // namespace

std::span<const Delivery::Kind> Delivery::kinds()
{
    return all;
}

bool Delivery::has(const QString &kind)
{
    return std::ranges::any_of(all, [&kind](const Kind &each) { return each.name == kind; });
}

void Delivery::setKind(const QString &kind)
{
    m_kind = kind;
    m_wasCut = false;
}

Work Delivery::redirect(Exchange &exchange, QByteArray usual, QByteArray self)
{
    const QByteArray target = plays("redirect-http"_L1)        ? "http://assets.morvane.invalid/archive"
                              : plays("redirect-elsewhere"_L1) ? "https://assets.morvane.invalid/archive"
                              : plays("redirect-nearby"_L1)    ? "http://192.168.255.254/archive"
                              : plays("redirect-file"_L1)      ? "file:///etc/hostname"
                              : plays("redirect-loop"_L1)      ? self
                                                               : usual;
    if (plays("missing"_L1) || plays("busy"_L1)) {
        co_await exchange.respond(plays("missing"_L1) ? 404 : 503, "text/plain", "Not Found");
        co_return;
    }
    if (plays("direct"_L1)) {
        co_await deliver(exchange);
        co_return;
    }
    const Exchange::Headers location{{"Location", target}};
    co_await exchange.respond(302, "text/html; charset=utf-8", QByteArray(), location);
}

qint64 Delivery::startOf(const Request &request) const
{
    const QByteArray range = request.header("Range").value_or(QByteArray());
    const QByteArray unit = "bytes=";
    if (!range.startsWith(unit) || plays("no-ranges"_L1) || (m_wasCut && plays("cut-then-changed"_L1)))
        return 0;
    return range.sliced(unit.size()).split('-').first().toLongLong();
}

Work Delivery::deliver(Exchange &exchange)
{
    const qint64 size = m_archive.size();
    const qint64 start = startOf(exchange.request());
    if (plays("endless"_L1)) {
        co_await pourWithoutEnd(exchange);
        co_return;
    }
    if (start < 0 || start >= size) {
        const Exchange::Headers range{{"Content-Range", "bytes */" + QByteArray::number(size)}};
        co_await exchange.respond(416, "text/plain", QByteArray(), range);
        co_return;
    }
    const qint64 end = plays("short"_L1) ? size / 2 : plays("long"_L1) ? size + 1'000'000 : size;
    co_await begin(exchange, start, end);
    if (exchange.request().method != "HEAD")
        co_await pour(exchange, start);
}

Work Delivery::begin(Exchange &exchange, qint64 start, qint64 end)
{
    const qint64 shift = plays("wrong-range"_L1) && start > 0 ? 1 : 0;
    QByteArray head = start > 0 ? "HTTP/1.1 206 Partial Content\r\n" : "HTTP/1.1 200 OK\r\n";
    head += "Content-Type: application/octet-stream\r\n";
    head += m_wasCut && plays("cut-then-changed"_L1) ? "ETag: \"second\"\r\n" : "ETag: \"first\"\r\n";
    if (!plays("no-ranges"_L1))
        head += "Accept-Ranges: bytes\r\n";
    if (start > 0)
        head += "Content-Range: bytes " + QByteArray::number(start + shift) + '-' +
                QByteArray::number(end - 1) + '/' + QByteArray::number(end) + "\r\n";
    head += "Content-Length: " + QByteArray::number(end - start - shift) + "\r\n\r\n";
    co_await exchange.send(head);
}

Work Delivery::pour(Exchange &exchange, qint64 start)
{
    QByteArray bytes = m_archive;
    const qint64 middle = bytes.size() / 2;
    if (plays("wrong-digest"_L1) || (m_wasCut && plays("cut-then-changed"_L1)))
        bytes[middle] = static_cast<char>(bytes[middle] + 1);
    if (plays("short"_L1))
        bytes.truncate(middle);
    if (plays("long"_L1))
        bytes.append(1'000'000, 'x');
    if (plays("wrong-range"_L1) && start > 0)
        ++start;
    const bool isCut = !m_wasCut && (plays("cut-once"_L1) || plays("cut-then-changed"_L1) ||
                                     plays("no-ranges"_L1) || plays("wrong-range"_L1));
    const qint64 end = isCut                   ? middle
                       : plays("cut-often"_L1) ? std::min<qint64>(start + bytes.size() / 4 + 1, bytes.size())
                                               : bytes.size();
    const qint64 portion = std::max<qint64>(1, bytes.size() / 100);
    for (qint64 at = start; at < end; at += portion) {
        if (plays("held"_L1) && at >= middle && at - portion < middle) {
            m_folder.note({{u"event"_s, u"held"_s}});
            co_await exchange.hold(m_holdPoint);
        }
        if (plays("drip"_L1))
            co_await exchange.pause(100ms);
        co_await exchange.send(bytes.mid(at, std::min(portion, end - at)));
    }
    if (end < bytes.size())
        exchange.cut();
    m_wasCut = m_wasCut || isCut;
}

Work Delivery::pourWithoutEnd(Exchange &exchange)
{
    co_await exchange.beginStream(200, "application/octet-stream");
    while (true)
        co_await exchange.chunk(m_archive);
}

} // namespace morvane
