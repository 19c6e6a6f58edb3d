// What is handed to the composer beside typing: files, pictures, the clipboard and the screen.

#include "view_models/ChatFixture.h"

#include "documents/DocumentError.h"
#include "services/ScreenGlanceError.h"
#include "services/ScreenGlancing.h"

#include <QMimeData>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using enum AttachmentDesk::State;

namespace {

// Answers that a test gives when it likes, in the order in which they were asked for.
template <typename T>
class Answers {
public:
    QCoro::Task<T> ask(std::stop_token stop)
    {
        auto [stream, producer] = AsyncStream<T>::make();
        m_producers.push_back(std::move(producer));
        return wait(std::move(stream), std::move(stop));
    }
    void give(T value)
    {
        m_producers.back().yield(std::move(value));
        TestWait::settle();
    }
    void fail(std::exception_ptr error)
    {
        m_producers.back().fail(std::move(error));
        TestWait::settle();
    }
    [[nodiscard]] std::size_t count() const { return m_producers.size(); }

private:
    static QCoro::Task<T> wait(AsyncStream<T> stream, std::stop_token stop)
    {
        std::optional<T> value = co_await stream.next(stop);
        co_return *value;
    }

    std::vector<typename AsyncStream<T>::Producer> m_producers;
};

// Reads what a test says was read.
class Importer final : public DocumentImporting {
public:
    QCoro::Task<ImportedAttachment> importDocument(QUrl, qsizetype, ImportProgress, std::stop_token) override
    {
        throw std::logic_error("nobody asks for it");
    }
    QCoro::Task<ImportedAttachment> importImage(QByteArray, QString, std::stop_token) override
    {
        throw std::logic_error("nobody asks for it");
    }
    QCoro::Task<std::optional<ImportedAttachment>> attachmentFromPasteboard(PastedContent content, qsizetype,
                                                                            ImportProgress told,
                                                                            std::stop_token stop) override
    {
        asked.append(content);
        progress = told;
        stops.push_back(stop);
        return reading.ask(stop);
    }

    void read(const QString &name, bool wasTruncated = false)
    {
        const bool isPicture = name.endsWith(u"png"_s);
        ImportedAttachment attachment{.id = QUuid::createUuid(),
                                      .filename = name,
                                      .fileExtension = isPicture ? u"image"_s : u"txt"_s,
                                      .fileSizeBytes = 1200,
                                      .text = u"the text"_s,
                                      .wasTruncated = wasTruncated};
        if (isPicture)
            attachment.imageData = "jpeg";
        reading.give(attachment);
    }
    void refuse(DocumentError::Plain reason) { reading.fail(std::make_exception_ptr(DocumentError(reason))); }

    QList<PastedContent> asked;
    ImportProgress progress;
    std::vector<std::stop_token> stops;
    Answers<std::optional<ImportedAttachment>> reading;
};

class Screen final : public ScreenGlancing {
public:
    QCoro::Task<QString> captureText(std::stop_token stop) override { return text.ask(stop); }
    Answers<QString> text;
};

class AttachmentTest : public ChatFixture {
protected:
    void TearDown() override
    {
        composer.endTurns();
        ChatFixture::TearDown();
    }

    void attach(const QStringList &names)
    {
        QList<QUrl> files;
        for (const QString &name : names)
            files += QUrl::fromLocalFile(u"/tmp/"_s + name);
        desk->attach(files);
    }
    [[nodiscard]] QString face() const { return desk->name() + u'|' + desk->detail(); }
    // The latest question as it was sent; its turn is stopped. Empty when nothing was sent since.
    [[nodiscard]] QString takeSent()
    {
        TestWait::settle();
        const QString text = replies.asked.empty() ? QString() : sentWords().back();
        replies.asked.clear();
        composer.stopResponding();
        TestWait::settle();
        return text;
    }
    [[nodiscard]] QString banner() const { return composer.banner().message; }

    Importer importer;
    Screen screen;
    QMimeData clipboard;
    ChatViewModel composer{[this] {
        auto all = services;
        all.documents = &importer;
        all.screen = &screen;
        all.clipboard = [this] { return &clipboard; };
        return all;
    }()};
    AttachmentDesk *desk = composer.entries()->attachments();
};

TEST_F(AttachmentTest, FilesAreReadOneAfterAnotherAndTheLastThatCanBeReadStays)
{
    composer.openAtStart();
    composer.setDraft(u"about it"_s);
    attach({u"a.txt"_s, u"b\n.png"_s, u"c.txt"_s});
    EXPECT_EQ(face(), u"a.txt|Reading 1 of 3"_s);
    EXPECT_LT(desk->progress(), 0);
    importer.progress(3, 10);
    EXPECT_EQ(face(), u"a.txt|Reading page 3 of 10"_s);
    EXPECT_EQ(desk->progress(), 0.3);
    composer.send();
    composer.perform(QuickAction::summarize);
    EXPECT_FALSE(composer.canSend()) << "no message goes without what was to go with it";
    EXPECT_EQ(takeSent(), QString());
    importer.read(u"a.txt"_s);
    EXPECT_EQ(face(), u"b .png|Reading 2 of 3"_s);
    importer.refuse(DocumentError::Plain::unreadableImage);
    EXPECT_EQ(banner(), u"That image couldn't be read."_s);
    EXPECT_TRUE(composer.banner().suggestion.startsWith(u"“b .png”: "_s));
    EXPECT_FALSE(composer.banner().retryable);
    importer.read(u"c.txt"_s, true);
    EXPECT_EQ(desk->state(), Cut);
    EXPECT_EQ(face(), u"c.txt|Text · 1.2 kB · cut to fit"_s);
    EXPECT_EQ(desk->notice(),
              u"A message takes one file: “c.txt” is attached, the other 2 are not. “c.txt” was "
              "truncated to fit the size limit."_s);

    attach({u"d.pdf"_s});
    importer.refuse(DocumentError::Plain::passwordProtected);
    EXPECT_EQ(desk->state(), Cut) << "what can't be read costs nothing";
    attach({u"e.pdf"_s});
    desk->remove();
    EXPECT_TRUE(importer.stops.back().stop_requested());
    importer.read(u"e.pdf"_s);
    EXPECT_EQ(desk->name(), u"c.txt"_s);
    attach({u"f.txt"_s});
    importer.read(u"f.txt"_s);
    EXPECT_EQ(desk->notice(), u"A message takes one file: “f.txt” is attached in place of “c.txt”."_s);
    desk->remove();
    EXPECT_EQ(desk->state(), Empty);
    attach({u"g.rtf"_s});
    importer.refuse(DocumentError::Plain::extractionFailed);
    EXPECT_EQ(desk->state(), Failed);
    EXPECT_EQ(face(), u"g.rtf|Text could not be extracted from this file."_s);
    EXPECT_TRUE(composer.hasBanner());
    desk->remove();
    EXPECT_FALSE(composer.hasBanner());
    EXPECT_EQ(composer.draft(), u"about it"_s);
    EXPECT_FALSE(repository.context().hasChanges());
}

TEST_F(AttachmentTest, WhatIsBeingReadEndsWithItsChatOrWhatIsHandedOverNext)
{
    composer.openAtStart();
    const std::function<void()> endings[] = {[this] { composer.newConversation(); },
                                             [this] { composer.endTurns(); },
                                             [this] { composer.remove(composer.conversationId()); }};
    for (const auto &end : endings) {
        composer.setDraft(u"so that the next chat is another one"_s);
        composer.send();
        TestWait::settle();
        composer.stopResponding();
        attach({u"first.txt"_s});
        importer.read(u"first.txt"_s);
        attach({u"second.txt"_s});
        end();
        EXPECT_TRUE(importer.stops.back().stop_requested());
        importer.read(u"second.txt"_s);
        EXPECT_EQ(desk->state(), Empty);
    }
    attach({u"long.pdf"_s});
    const std::stop_token former = importer.stops.back();
    attach({u"short.txt"_s});
    EXPECT_TRUE(former.stop_requested());
    importer.read(u"short.txt"_s);
    EXPECT_EQ(desk->name(), u"short.txt"_s);
    EXPECT_EQ(desk->notice(), QString());
}

TEST_F(AttachmentTest, ThePasteTakesFilesThenTextThenAPicture)
{
    const QUrl file = QUrl::fromLocalFile(u"/tmp/a.txt"_s);
    const struct {
        QList<QUrl> urls;
        QString text;
        QByteArray image;
        bool isTaken;
    } cases[] = {{{file, QUrl(u"https://a.example/"_s)}, u"/tmp/a.txt"_s, "png", true},
                 {{}, u"cells"_s, "png", false},
                 {{}, {}, "png", true},
                 {{QUrl(u"https://a.example/"_s)}, u"https://a.example/"_s, {}, false},
                 {{}, {}, {}, false}};
    for (const auto &[urls, text, image, isTaken] : cases) {
        clipboard.clear();
        if (!urls.isEmpty())
            clipboard.setUrls(urls);
        if (!text.isEmpty())
            clipboard.setText(text);
        if (!image.isEmpty())
            clipboard.setData(u"image/png"_s, image);
        importer.asked.clear();
        EXPECT_EQ(desk->canPaste(), isTaken) << text.toStdString();
        EXPECT_EQ(desk->paste(), isTaken);
        ASSERT_EQ(importer.asked.size(), isTaken ? 1 : 0);
        const QList<QUrl> taken = isTaken ? importer.asked[0].urls : QList<QUrl>();
        EXPECT_EQ(taken, urls.contains(file) ? QList{file} : QList<QUrl>()) << "of this machine";
    }
}

TEST_F(AttachmentTest, TheClipboardsTextIsAskedAboutUnlessItIsASecret)
{
    composer.openAtStart();
    settings.setMaxExtractedCharacters(6);
    clipboard.setText(u" one two "_s);
    desk->askAboutClipboard();
    EXPECT_EQ(desk->name(), u"Clipboard text"_s);
    EXPECT_EQ(desk->state(), Cut);
    composer.perform(QuickAction::explain);
    EXPECT_TRUE(takeSent().contains(u"(the user's clipboard, id "_s));
    EXPECT_EQ(desk->state(), Empty);
    for (const char *hint : {"secret", "", "other"}) {
        clipboard.setText(*hint ? u"plain"_s : u" \n"_s);
        clipboard.setData(u"x-kde-passwordManagerHint"_s, hint);
        desk->askAboutClipboard();
        const bool isRead = QByteArray(hint) == "other";
        EXPECT_EQ(banner(), isRead ? QString() : u"The clipboard has no text."_s) << hint;
        EXPECT_EQ(desk->state(), isRead ? Ready : Empty);
    }
}

TEST_F(AttachmentTest, AQuickActionTakesTheAttachmentOrElseTheDraft)
{
    composer.openAtStart();
    composer.perform(QuickAction::rewrite);
    EXPECT_EQ(takeSent(), QString());
    composer.setDraft(u" my words "_s);
    attach({u"a.txt"_s});
    importer.read(u"a.txt"_s);
    composer.perform(QuickAction::extractActions);
    EXPECT_TRUE(takeSent().endsWith(u"User request: Extract the action items from this as a checklist."_s));
    EXPECT_EQ(composer.draft(), u" my words "_s);
    composer.perform(QuickAction::draftReply);
    EXPECT_EQ(takeSent(), u"Draft a thoughtful reply to this.\n\nmy words"_s);
    EXPECT_EQ(composer.draft(), QString());
    EXPECT_EQ(composer.conversation()->draft(), QString());
}

TEST_F(AttachmentTest, APictureIsWarnedOfByWhereRepliesComeFrom)
{
    composer.openAtStart();
    const struct {
        QString address, model;
        bool isWarned, isSmall;
    } cases[] = {{u"https://service.example/v1"_s, u"m:7b"_s, true, false},
                 {u"http://localhost:1/v1"_s, u"gpt-oss:120b-cloud"_s, true, false},
                 {u"http://localhost:1/v1"_s, u"Qwen2.5-7B-Instruct"_s, false, true},
                 {u"http://192.168.1.2:1/v1"_s, u"m:15.9b"_s, false, true},
                 {u"http://localhost:1/v1"_s, u"m:16b"_s, false, false},
                 {u"http://localhost:1/v1"_s, u"m:30b-a3b"_s, false, false},
                 {u"http://localhost:1/v1"_s, u"m7bit"_s, false, false}};
    for (const auto &[address, model, isWarned, isSmall] : cases) {
        settings.setBaseURLString(address);
        settings.setModel(model);
        attach({u"cat.png"_s});
        importer.read(u"cat.png"_s);
        EXPECT_EQ(banner(),
                  isWarned ? u"Images go only to a model on this computer or your network."_s : QString())
            << model.toStdString();
        EXPECT_EQ(!composer.entries()->modelNotice().isEmpty(), isSmall) << model.toStdString();
        desk->remove();
        EXPECT_FALSE(composer.hasBanner()) << "it goes with the picture";
    }
}

TEST_F(AttachmentTest, TheScreenIsLookedAtOnceAndOnlyWhileNothingIsAnswered)
{
    composer.openAtStart();
    ComposerEntries &entries = *composer.entries();
    EXPECT_TRUE(entries.offersScreen());
    EXPECT_FALSE(chat.entries()->offersScreen());
    entries.glanceAtScreen(false);
    entries.glanceAtScreen(true);
    EXPECT_EQ(screen.text.count(), 1U);
    screen.text.give(u"a page"_s);
    EXPECT_EQ(desk->name(), u"What's on your screen"_s);
    EXPECT_EQ(takeSent(), QString());
    desk->clear();

    entries.glanceAtScreen(true);
    screen.text.fail(std::make_exception_ptr(ScreenGlanceError(ScreenGlanceError::Case::needsRelaunch)));
    EXPECT_EQ(banner(), u"I can't see your screen from this copy of MorvaneGPT."_s);
    EXPECT_EQ(composer.banner().recovery, ErrorBanner::Recovery::relaunchForScreenRecording);
    EXPECT_EQ(companion.state(), CompanionState::error);
    composer.retry();
    EXPECT_FALSE(composer.hasBanner());
    screen.text.give(u"a page"_s);
    EXPECT_EQ(takeSent(), QString()) << "the person sees what was read before it goes";
    EXPECT_EQ(desk->text(), u"a page"_s);
    entries.glanceAtScreen(true);
    screen.text.give(u"another"_s);
    composer.send();
    entries.glanceAtScreen(false);
    EXPECT_EQ(screen.text.count(), 4U) << "not while something is answered";
    const QString sent = takeSent();
    EXPECT_TRUE(sent.endsWith(u"User request: Summarize what's on my screen."_s)) << "once, after two looks";
    EXPECT_TRUE(sent.contains(u"another"_s));

    entries.glanceAtScreen(false);
    composer.setDraft(u"meanwhile"_s);
    composer.send();
    screen.text.give(u"a page"_s);
    EXPECT_EQ(desk->state(), Ready) << "a turn is at work by now";
    EXPECT_EQ(takeSent(), u"meanwhile"_s);
    entries.glanceAtScreen(true);
    screen.text.fail(std::make_exception_ptr(std::runtime_error("unknown")));
    EXPECT_EQ(banner(), u"I couldn't take a look at your screen just now."_s);
    entries.glanceAtScreen(true);
    composer.newConversation();
    screen.text.give(u"of another chat"_s);
    EXPECT_EQ(desk->state(), Empty);
    EXPECT_EQ(takeSent(), QString());
}

} // namespace

} // namespace morvane
