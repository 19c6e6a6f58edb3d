#pragma once

#include "view_models/chat/ApprovalDesk.h"
#include "view_models/chat/ErrorBanner.h"
#include "view_models/companion/CompanionState.h"

#include <QAbstractListModel>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

namespace morvane {

// What the window binds to, under the test's control. Each class has the properties, roles and operations of
// its real counterpart that the window uses, and notes what the window asks for. A test of its own compares
// them with the real ones.

// A list of named values.
class FakeRows : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    FakeRows(QList<QByteArray> roles, QObject *parent);

    [[nodiscard]] int count() const { return static_cast<int>(m_rows.size()); }
    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    void append(const QVariantMap &row);
    void set(int row, const QByteArray &role, const QVariant &value);
    void clear();

Q_SIGNALS:
    void countChanged();

private:
    QList<QByteArray> m_roles;
    QList<QVariantMap> m_rows;
};

class FakeMessageList : public FakeRows {
    Q_OBJECT
public:
    explicit FakeMessageList(QObject *parent = nullptr);

    void addUser(const QString &text);
    void addReply(const QString &text, const QVariantMap &more = {});
};

class FakeConversationList : public FakeRows {
    Q_OBJECT
public:
    explicit FakeConversationList(QObject *parent = nullptr);

    Q_INVOKABLE QString neighbour(const QString &id, int step);
};

class FakeSearch : public FakeRows {
    Q_OBJECT
    Q_PROPERTY(QString query READ query WRITE setQuery NOTIFY queryChanged)
    Q_PROPERTY(bool isActive READ isActive NOTIFY queryChanged)
    Q_PROPERTY(bool isSearching MEMBER isSearching NOTIFY isSearchingChanged)

public:
    explicit FakeSearch(QObject *parent = nullptr);

    [[nodiscard]] const QString &query() const { return m_query; }
    void setQuery(const QString &query);
    [[nodiscard]] bool isActive() const { return !m_query.isEmpty(); }

    bool isSearching = false;

Q_SIGNALS:
    void queryChanged();
    void isSearchingChanged();

private:
    QString m_query;
};

class FakeNetworkLedger : public FakeRows {
    Q_OBJECT
    Q_PROPERTY(QString exportFileName MEMBER exportFileName)
    Q_PROPERTY(QString exportProblem MEMBER exportProblem NOTIFY exportProblemChanged)
    Q_PROPERTY(bool watching MEMBER watching NOTIFY watchingChanged)

public:
    explicit FakeNetworkLedger(QObject *parent = nullptr);

    Q_INVOKABLE bool exportTo(const QUrl &file);
    Q_INVOKABLE void clear() { FakeRows::clear(); }

    QString exportFileName = QStringLiteral("ledger.csv");
    QString exportProblem;
    bool watching = false;

Q_SIGNALS:
    void exportProblemChanged();
    void watchingChanged();
};

class FakeChat : public QObject {
    Q_OBJECT
    Q_PROPERTY(FakeMessageList *messages MEMBER messages CONSTANT)
    Q_PROPERTY(QString draft READ draft WRITE setDraft NOTIFY draftChanged)
    Q_PROPERTY(bool canSend READ canSend NOTIFY canSendChanged)
    Q_PROPERTY(bool isResponding READ isResponding NOTIFY isRespondingChanged)
    Q_PROPERTY(bool hasBanner READ hasBanner NOTIFY bannerChanged)
    Q_PROPERTY(morvane::ErrorBanner banner READ banner NOTIFY bannerChanged)
    Q_PROPERTY(bool hasApproval READ hasApproval NOTIFY approvalChanged)
    Q_PROPERTY(morvane::ApprovalRequest approval READ approval NOTIFY approvalChanged)
    Q_PROPERTY(QDateTime approvalDeadline READ approvalDeadline NOTIFY approvalChanged)
    Q_PROPERTY(QString title MEMBER title NOTIFY conversationChanged)
    Q_PROPERTY(QString conversationId MEMBER conversationId NOTIFY conversationChanged)
    Q_PROPERTY(QString sourceLabel MEMBER sourceLabel NOTIFY sourceChanged)
    Q_PROPERTY(bool isConfigured MEMBER isConfigured NOTIFY sourceChanged)

public:
    explicit FakeChat(QObject *parent = nullptr);

    [[nodiscard]] const QString &draft() const { return m_draft; }
    void setDraft(const QString &draft);
    [[nodiscard]] bool canSend() const { return !m_draft.trimmed().isEmpty() && !m_responding; }
    [[nodiscard]] bool isResponding() const { return m_responding; }
    void setResponding(bool responding);
    [[nodiscard]] bool hasBanner() const { return !m_banner.message.isEmpty(); }
    [[nodiscard]] ErrorBanner banner() const { return m_banner; }
    void setBanner(const ErrorBanner &banner);
    [[nodiscard]] bool hasApproval() const { return !m_approval.verb.isEmpty(); }
    [[nodiscard]] ApprovalRequest approval() const { return m_approval; }
    [[nodiscard]] QDateTime approvalDeadline() const { return QDateTime::currentDateTime().addSecs(90); }
    void setApproval(const ApprovalRequest &approval);

    Q_INVOKABLE void newConversation() { note("new"); }
    Q_INVOKABLE void open(const QString &id) { note("open " + id); }
    Q_INVOKABLE void remove(const QString &id) { note("remove " + id); }
    Q_INVOKABLE void rename(const QString &id, const QString &name) { note("rename " + id + " " + name); }
    Q_INVOKABLE void send();
    Q_INVOKABLE void retryLastTurn() { note("retry"); }
    Q_INVOKABLE void continueReply(const QString &messageId) { note("continue " + messageId); }
    Q_INVOKABLE void stopResponding() { note("stop"); }
    Q_INVOKABLE QString lastAnswer() const { return answer; }
    Q_INVOKABLE void dismissBanner() { note("dismiss"); }
    Q_INVOKABLE void approve() { note("approve"); }
    Q_INVOKABLE void approveForChat() { note("approve for chat"); }
    Q_INVOKABLE void decline() { note("decline"); }

    // What the window asked for, in order.
    [[nodiscard]] QStringList takeCalls() { return std::exchange(m_calls, {}); }

    FakeMessageList *messages = new FakeMessageList(this);
    QString title = QStringLiteral("New Conversation");
    QString conversationId = QStringLiteral("A");
    QString sourceLabel = QStringLiteral("practice");
    QString answer;
    bool isConfigured = true;

Q_SIGNALS:
    void draftChanged();
    void canSendChanged();
    void isRespondingChanged();
    void bannerChanged();
    void approvalChanged();
    void conversationChanged();
    void sourceChanged();
    void messageSent();
    void replyFinished(const QString &text);

private:
    void note(const QString &call) { m_calls += call; }

    QString m_draft;
    bool m_responding = false;
    ErrorBanner m_banner;
    ApprovalRequest m_approval;
    QStringList m_calls;
};

class FakeServerModels : public QObject {
    Q_OBJECT
    Q_PROPERTY(QStringList names MEMBER names NOTIFY changed)
    Q_PROPERTY(bool isFetching MEMBER isFetching NOTIFY changed)
    Q_PROPERTY(QString problem MEMBER problem NOTIFY changed)

public:
    using QObject::QObject;

    Q_INVOKABLE void fetch();
    void answer(const QStringList &models, const QString &why = {});

    QStringList names;
    bool isFetching = false;
    QString problem;

Q_SIGNALS:
    void changed();
};

class FakeSources : public FakeRows {
    Q_OBJECT
    Q_PROPERTY(QString name MEMBER name NOTIFY sourceChanged)
    Q_PROPERTY(QString destination MEMBER destination NOTIFY sourceChanged)
    Q_PROPERTY(QString glyph MEMBER glyph NOTIFY sourceChanged)
    Q_PROPERTY(QString warning MEMBER warning NOTIFY sourceChanged)
    Q_PROPERTY(QString cloudNotice MEMBER cloudNotice NOTIFY sourceChanged)

public:
    explicit FakeSources(QObject *parent = nullptr);

    void offer(const QString &name, const QString &problem = {}, bool inUse = false);
    Q_INVOKABLE void choose(int row) { chosen += row; }

    QString name = QStringLiteral("practice");
    QString destination = QStringLiteral("Stays on this computer");
    QString glyph = QStringLiteral("computer");
    QString warning;
    QString cloudNotice;
    QList<int> chosen;

Q_SIGNALS:
    void sourceChanged();
};

class FakeInstructions : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString text MEMBER text NOTIFY textChanged)
    Q_PROPERTY(QString defaultText MEMBER defaultText CONSTANT)
    Q_PROPERTY(QString problem MEMBER problem NOTIFY problemChanged)

public:
    using QObject::QObject;

    Q_INVOKABLE void reset() { ++resets; }

    QString text;
    QString defaultText = QStringLiteral("Be helpful.");
    QString problem;
    int resets = 0;

Q_SIGNALS:
    void textChanged();
    void problemChanged();
};

class FakeReceipts : public FakeRows {
    Q_OBJECT
public:
    explicit FakeReceipts(QObject *parent = nullptr);

    Q_INVOKABLE void undo(const QString &receiptId) { calls += "undo " + receiptId; }
    Q_INVOKABLE void dismiss(const QString &receiptId) { calls += "dismiss " + receiptId; }

    QStringList calls;
};

class FakeAbilities : public FakeRows {
    Q_OBJECT
    Q_PROPERTY(bool enabled MEMBER enabled NOTIFY switchesChanged)
    Q_PROPERTY(bool memory MEMBER memory NOTIFY switchesChanged)
    Q_PROPERTY(bool web MEMBER web NOTIFY switchesChanged)
    Q_PROPERTY(bool screen MEMBER screen NOTIFY switchesChanged)
    Q_PROPERTY(bool desktop MEMBER desktop NOTIFY switchesChanged)

public:
    explicit FakeAbilities(QObject *parent = nullptr);

    bool enabled = true;
    bool memory = true;
    bool web = true;
    bool screen = false;
    bool desktop = false;

Q_SIGNALS:
    void switchesChanged();
};

class FakeSearchKey : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool hasKey MEMBER hasKey NOTIFY changed)
    Q_PROPERTY(bool isTesting MEMBER isTesting NOTIFY changed)
    Q_PROPERTY(bool worked MEMBER worked NOTIFY changed)
    Q_PROPERTY(QString message MEMBER message NOTIFY changed)

public:
    using QObject::QObject;

    Q_INVOKABLE void save(const QString &key) { saved += key; }
    Q_INVOKABLE void test() { ++tests; }
    Q_INVOKABLE void cancelTest() {}

    bool hasKey = false;
    bool isTesting = false;
    bool worked = false;
    QString message;
    QStringList saved;
    int tests = 0;

Q_SIGNALS:
    void changed();
};

class FakeMemory : public FakeRows {
    Q_OBJECT
    Q_PROPERTY(QString problem MEMBER problem NOTIFY problemChanged)

public:
    explicit FakeMemory(QObject *parent = nullptr);

    Q_INVOKABLE void update(const QString &factId, const QString &text) { calls += factId + ' ' + text; }
    Q_INVOKABLE void remove(const QString &factId) { calls += "remove " + factId; }
    Q_INVOKABLE void clear() { calls += "clear"; }

    QString problem;
    QStringList calls;

Q_SIGNALS:
    void problemChanged();
};

class FakeAISettings : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString address MEMBER address NOTIFY addressChanged)
    Q_PROPERTY(QString addressProblem MEMBER addressProblem NOTIFY addressChanged)
    Q_PROPERTY(QString model MEMBER model NOTIFY modelChanged)
    Q_PROPERTY(FakeServerModels *serverModels MEMBER serverModels CONSTANT)
    Q_PROPERTY(bool hasKey MEMBER hasKey NOTIFY keyChanged)
    Q_PROPERTY(double temperature MEMBER temperature NOTIFY temperatureChanged)
    Q_PROPERTY(int maxOutputTokens MEMBER maxOutputTokens NOTIFY maxOutputTokensChanged)
    Q_PROPERTY(int maxContextMessages MEMBER maxContextMessages NOTIFY maxContextMessagesChanged)
    Q_PROPERTY(TestState testState MEMBER testState NOTIFY testChanged)
    Q_PROPERTY(QString testMessage MEMBER testMessage NOTIFY testChanged)
    Q_PROPERTY(QString testSuggestion MEMBER testSuggestion NOTIFY testChanged)

public:
    enum class TestState { untested, running, succeeded, failed };
    Q_ENUM(TestState)

    using QObject::QObject;

    Q_INVOKABLE void saveKey(const QString &key);
    Q_INVOKABLE void test() { setTest(TestState::running); }
    Q_INVOKABLE void cancelTest() { setTest(TestState::untested); }
    void setTest(TestState state, const QString &message = {}, const QString &suggestion = {});

    QString address;
    QString addressProblem;
    QString model;
    FakeServerModels *serverModels = new FakeServerModels(this);
    bool hasKey = false;
    QStringList savedKeys;
    double temperature = 0.7;
    int maxOutputTokens = 2048;
    int maxContextMessages = 20;
    TestState testState = TestState::untested;
    QString testMessage;
    QString testSuggestion;

Q_SIGNALS:
    void addressChanged();
    void modelChanged();
    void keyChanged();
    void temperatureChanged();
    void maxOutputTokensChanged();
    void maxContextMessagesChanged();
    void testChanged();
};

class FakeShell : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString productName MEMBER productName CONSTANT)
    Q_PROPERTY(QString appearance MEMBER appearance NOTIFY appearanceChanged)
    Q_PROPERTY(bool dark MEMBER dark NOTIFY appearanceChanged)
    Q_PROPERTY(QString backdrop MEMBER backdrop NOTIFY appearanceChanged)
    Q_PROPERTY(QStringList backdrops MEMBER backdrops CONSTANT)
    Q_PROPERTY(bool reduceAnimation MEMBER reduceAnimation NOTIFY reduceAnimationChanged)
    Q_PROPERTY(double textScale MEMBER textScale NOTIFY textScaleChanged)
    Q_PROPERTY(QString textSize MEMBER textSize NOTIFY textScaleChanged)
    Q_PROPERTY(bool sidebarOpen MEMBER sidebarOpen NOTIFY sidebarOpenChanged)
    Q_PROPERTY(QString startupError MEMBER startupError CONSTANT)
    Q_PROPERTY(QString startupSuggestion MEMBER startupSuggestion CONSTANT)
    Q_PROPERTY(QString keychainNotice MEMBER keychainNotice CONSTANT)
    Q_PROPERTY(QString questionTitle MEMBER questionTitle NOTIFY questionChanged)
    Q_PROPERTY(QString questionText MEMBER questionText NOTIFY questionChanged)
    Q_PROPERTY(QStringList questionButtons MEMBER questionButtons NOTIFY questionChanged)

public:
    using QObject::QObject;

    Q_INVOKABLE void answerQuestion(int button);
    Q_INVOKABLE void copy(const QString &text) const { copied = text; }
    Q_INVOKABLE void openLink(const QString &address) { openedLinks += address; }
    void ask(const QString &title, const QStringList &buttons);

    QString productName = QStringLiteral("MorvaneGPT");
    QString keychainNotice;
    QString appearance = QStringLiteral("system");
    bool dark = false;
    QString backdrop = QStringLiteral("dusk");
    QStringList backdrops = {QStringLiteral("dusk"), QStringLiteral("night")};
    bool reduceAnimation = true; // nothing slides, so nothing has to be waited for
    double textScale = 1;
    QString textSize = QStringLiteral("medium");
    bool sidebarOpen = true;
    QString startupError;
    QString startupSuggestion;
    QString questionTitle;
    QString questionText;
    QStringList questionButtons;
    QList<int> answers;
    mutable QString copied;
    QStringList openedLinks;

Q_SIGNALS:
    void appearanceChanged();
    void reduceAnimationChanged();
    void textScaleChanged();
    void sidebarOpenChanged();
    void questionChanged();
    void settingsRequested();
};

class FakeCompanion : public QObject {
    Q_OBJECT
    Q_PROPERTY(morvane::Companion::State state MEMBER state NOTIFY stateChanged)
    Q_PROPERTY(QString bubbleText MEMBER bubbleText NOTIFY bubbleTextChanged)
    Q_PROPERTY(bool isHovering MEMBER isHovering NOTIFY isHoveringChanged)

public:
    using QObject::QObject;

    Companion::State state = Companion::State::idle;
    QString bubbleText;
    bool isHovering = false;

Q_SIGNALS:
    void stateChanged();
    void bubbleTextChanged();
    void isHoveringChanged();
};

} // namespace morvane
