#include "ModelPull.h"

#include "model_server/Dialect.h"
#include "model_server/OllamaObjects.h"
#include "model_server/Reply.h"

#include <QFile>

#include <stdexcept>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

ModelPull::ModelPull(Exchange &exchange, const Surroundings &surroundings)
    : m_exchange(exchange)
    , m_around(surroundings)
    , m_model(exchange.request().json["model"_L1].toString(
          exchange.request().json["name"_L1].toString())) // the former key
    , m_scenario(surroundings.folder.scenario())
{}

Work ModelPull::run()
{
    m_around.folder.note({{u"event"_s, u"pull"_s}, {u"model"_s, m_model}});
    const bool streams = m_exchange.request().wantsStream();
    if (streams)
        co_await m_exchange.beginStream(200, Dialect::streamType(m_exchange.request()));
    QString problem;
    try {
        co_await fetchAll();
    } catch (const boost::system::system_error &) {
        throw; // the client went away
    } catch (const std::runtime_error &error) {
        problem = QString::fromUtf8(error.what());
    }
    if (m_wasCut)
        co_return;
    if (!problem.isEmpty())
        m_around.folder.note({{u"event"_s, u"pull failed"_s}, {u"words"_s, problem}});
    QJsonObject last =
        problem.isEmpty() ? QJsonObject{{u"status"_s, u"success"_s}} : OllamaObjects::error(problem);
    if (!streams) {
        co_await m_exchange.respondJson(problem.isEmpty() ? 200 : 500, last);
        co_return;
    }
    co_await tell(last);
    co_await m_exchange.endStream();
}

Work ModelPull::fetchAll()
{
    if (!QFile::exists(m_around.identityKey))
        throw std::runtime_error("open id_ed25519: no such file or directory");
    co_await tellStatus("pulling manifest");
    if (m_model.isEmpty())
        throw std::runtime_error("model is required");
    if (plays("pull-error"_L1))
        throw std::runtime_error("pull model manifest: Get \"https://registry.invalid/v2/\": i/o timeout");
    if (plays("pull-endless-line"_L1))
        co_await endlessLine();
    const std::vector<PretendRegistry::Layer> layers = PretendRegistry::layers(m_model);
    for (const PretendRegistry::Layer &layer : layers) {
        co_await fetch(layer);
        if (m_wasCut)
            co_return;
    }
    co_await tellStatus("verifying sha256 digest");
    for (const PretendRegistry::Layer &layer : layers)
        m_around.store.verify(layer);
    co_await tellStatus("writing manifest");
    m_around.store.writeManifest(m_model, layers);
}

Work ModelPull::fetch(PretendRegistry::Layer layer)
{
    const qint64 start = m_around.store.has(layer);
    m_around.folder.note({{u"event"_s, u"layer"_s}, {u"from"_s, start}, {u"size"_s, layer.size}});
    const qint64 lines = plays("pull-lines"_L1) ? 400 : 1; // for a portion
    co_await tellProgress(layer, start);
    for (qint64 offset = start; offset < layer.size; offset += PretendRegistry::portion) {
        if (offset >= layer.size / 2 && offset < layer.size / 2 + PretendRegistry::portion)
            co_await playHalfWay();
        if (m_wasCut)
            co_return;
        QByteArray bytes = PretendRegistry::bytes(layer, offset);
        if (plays("pull-wrong-layer"_L1))
            bytes.fill('?');
        m_around.store.append(layer, bytes);
        for (qint64 line = 1; line <= lines; ++line)
            co_await tellProgress(layer, offset + bytes.size() * line / lines);
        if (plays("pull-slow"_L1))
            co_await m_exchange.pause(80ms);
    }
}

Work ModelPull::playHalfWay()
{
    if (plays("pull-held"_L1)) {
        m_around.folder.note({{u"event"_s, u"held"_s}});
        co_await m_exchange.hold(m_around.holdPoint);
    }
    m_wasCut = plays("pull-cut"_L1) && !m_around.folder.wasMarked(u"cut"_s);
    if (m_wasCut)
        m_exchange.cut();
}

Work ModelPull::endlessLine()
{
    co_await m_exchange.chunk("{\"status\":\"");
    while (true)
        co_await m_exchange.chunk(QByteArray(PretendRegistry::portion, 'x'));
}

Work ModelPull::tell(QJsonObject line)
{
    if (m_exchange.request().wantsStream())
        co_await m_exchange.chunk(Dialect::line(m_exchange.request(), line));
}

Work ModelPull::tellStatus(const char *words)
{
    const QJsonObject line{{u"status"_s, QString::fromLatin1(words)}};
    co_await tell(line);
}

Work ModelPull::tellProgress(const PretendRegistry::Layer &layer, qint64 completed)
{
    const QString digest = QString::fromLatin1(layer.digest);
    QJsonObject line{{u"status"_s, u"pulling "_s + digest.first(12)},
                     {u"digest"_s, u"sha256:"_s + digest},
                     {u"total"_s, layer.size}};
    if (completed > 0) // the first line of a layer leaves it out
        line.insert(u"completed"_s, completed);
    co_await tell(line);
}

} // namespace morvane
