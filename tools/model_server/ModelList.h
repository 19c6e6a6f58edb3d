#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace morvane {

// A model that the server says it has.
struct ListedModel {
    QString name;
    std::optional<QStringList> capabilities; // as Ollama names them; absent: the server doesn't tell
    QString remoteHost;                      // where it runs when that is a service on the internet
    QString scenario;                        // what it plays; empty: the one of its own name
    QString weights;                         // another text here is another digest
    qint64 size = 1'073'741'824;             // bytes

    [[nodiscard]] bool can(const QString &capability) const;
    [[nodiscard]] QString digest() const; // 64 hexadecimal digits
};

// The models on the shelf: those that were asked for at start, else one for each scenario.
class ModelList {
public:
    // README.md describes the JSON of a model. False, with a sentence in `problem`, when it isn't one.
    [[nodiscard]] bool add(const QString &json, QString &problem);

    // Fills an empty shelf.
    void addScenarios();

    // A model that was pulled.
    void add(const QString &name);

    // In the place of the one of that name.
    void put(ListedModel model);
    // False when there is none of that name.
    bool remove(const QString &name);

    [[nodiscard]] const std::vector<ListedModel> &models() const { return m_models; }

    // Nothing for an unknown name. A name without a tag means the tag "latest" too.
    [[nodiscard]] const ListedModel *find(const QString &name) const;

    // The name of the scenario that a request for this model plays.
    [[nodiscard]] QString scenarioFor(const QString &name) const;

private:
    std::vector<ListedModel> m_models;
};

} // namespace morvane
