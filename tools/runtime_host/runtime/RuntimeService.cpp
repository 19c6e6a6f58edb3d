#include "RuntimeService.h"

#include "Installation.h"

#include "model_server/OllamaObjects.h"
#include "model_server/Reply.h"

#include <QDateTime>
#include <QJsonArray>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <spawn.h>
#include <sys/wait.h>

namespace morvane {

using namespace Qt::StringLiterals;

RuntimeService::RuntimeService(Places places, PracticeFolder folder)
    : m_places(std::move(places))
    , m_folder(std::move(folder))
    , m_store(m_places.models)
    , m_models({.speaksOllama = true}, m_script)
{}

RuntimeService::~RuntimeService()
{
    if (m_runner > 0) {
        ::kill(m_runner, SIGKILL);
        ::waitpid(m_runner, nullptr, 0);
    }
}

Work RuntimeService::answer(Exchange &exchange)
{
    const QByteArray road = exchange.request().method + ' ' + exchange.request().path();
    readModels();
    if (road == "POST /api/pull")
        co_await pull(exchange);
    else if (road == "DELETE /api/delete")
        co_await remove(exchange);
    else if (road == "GET /api/ps")
        co_await processes(exchange);
    else if (road == "POST /api/generate")
        co_await load(exchange);
    else if (road == "POST /go-on")
        co_await goOn(exchange);
    else if (road == "GET /")
        co_await greet(exchange);
    else if (road == "GET /api/tags")
        co_await tags(exchange);
    else if (road.startsWith("POST /") && (road.endsWith("/api/chat") || road.endsWith("/chat/completions")))
        co_await chat(exchange);
    else
        co_await m_models.answer(exchange);
    if (m_folder.scenario() == "dies-after-start"_L1)
        std::_Exit(2);
}

void RuntimeService::readModels()
{
    const bool isChanged = m_folder.scenario() == "changed-digest"_L1;
    ModelList list;
    for (const ModelStore::Model &model : m_store.models()) {
        const QString second = model.name.startsWith("gemma"_L1) ? u"vision"_s : u"tools"_s;
        list.put({model.name,
                  QStringList{u"completion"_s, second},
                  {},
                  u"practice-fast"_s,
                  isChanged ? u"changed"_s : model.digest,
                  model.size});
    }
    m_models.models() = std::move(list);
}

Work RuntimeService::pull(Exchange &exchange)
{
    const ModelPull::Surroundings around{m_store, m_folder, m_holdPoint, m_places.identityKey};
    ModelPull pull(exchange, around);
    co_await pull.run();
}

Work RuntimeService::remove(Exchange &exchange)
{
    const QString name = exchange.request().model();
    if (m_store.remove(name)) {
        m_loaded.erase(name);
        co_await exchange.respond(200, "text/plain", QByteArray());
    } else {
        co_await refuse(exchange, 404, u"model '%1' not found"_s.arg(name));
    }
}

Work RuntimeService::processes(Exchange &exchange)
{
    QJsonArray list;
    for (const ListedModel &model : m_models.models().models()) {
        if (!m_loaded.contains(model.name))
            continue;
        QJsonObject entry = OllamaObjects::tag(model);
        entry.remove("modified_at"_L1);
        entry.insert(u"size_vram"_s, 0);
        entry.insert(u"expires_at"_s,
                     QDateTime::currentDateTimeUtc().addSecs(300).toString(Qt::ISODateWithMs));
        list.append(entry);
    }
    const QJsonObject body{{u"models"_s, list}};
    co_await exchange.respondJson(200, body);
}

// Without a prompt this loads a model, or unloads it when it is to be kept for no time at all.
Work RuntimeService::load(Exchange &exchange)
{
    const Request &request = exchange.request();
    const ListedModel *model = m_models.models().find(request.model());
    if (!model) {
        co_await refuse(exchange, 404, u"model '%1' not found"_s.arg(request.model()));
        co_return;
    }
    const bool leaves = request.json["keep_alive"_L1].toInt(1) == 0;
    if (leaves)
        m_loaded.erase(model->name);
    else
        m_loaded.insert(model->name);
    const QJsonObject body{{u"model"_s, model->name},
                           {u"created_at"_s, QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs)},
                           {u"response"_s, QString()},
                           {u"done"_s, true},
                           {u"done_reason"_s, leaves ? u"unload"_s : u"load"_s}};
    co_await exchange.respondJson(200, body);
}

Work RuntimeService::goOn(Exchange &exchange)
{
    m_holdPoint.goOn();
    co_await exchange.respond(204, "text/plain", QByteArray());
}

Work RuntimeService::greet(Exchange &exchange)
{
    co_await exchange.respond(200, "text/plain; charset=utf-8", "Ollama is running");
}

Work RuntimeService::tags(Exchange &exchange)
{
    if (m_folder.scenario() == "third-probe"_L1 && ++m_tagRequests < 3)
        co_await refuse(exchange, 503, u"starting"_s);
    else
        co_await m_models.answer(exchange);
}

Work RuntimeService::chat(Exchange &exchange)
{
    const Request &request = exchange.request();
    const QString scenario = m_folder.scenario();
    if (scenario == "talkative"_L1)
        std::fprintf(stderr, "level=DEBUG msg=\"chat request\" prompt=\"%s\"\n",
                     qPrintable(request.lastUserText()));
    if (scenario == "runner"_L1)
        startRunner();
    if (const ListedModel *model = m_models.models().find(request.model()))
        m_loaded.insert(model->name);
    co_await m_models.answer(exchange);
}

void RuntimeService::startRunner()
{
    if (m_runner > 0)
        return;
    const QByteArray binary = Installation::binary().toLocal8Bit();
    QByteArray word = "runner";
    char *arguments[]{const_cast<char *>(binary.constData()), word.data(), nullptr};
    if (::posix_spawn(&m_runner, binary.constData(), nullptr, nullptr, arguments, environ) != 0)
        m_runner = 0;
    m_folder.note({{u"event"_s, u"runner"_s}, {u"process"_s, m_runner}});
}

} // namespace morvane
