#include "end_to_end/AppFixture.h"

#include "persistence/SettingsStore.h"

#include <QBuffer>
#include <QClipboard>
#include <QDropEvent>
#include <QGuiApplication>
#include <QImage>
#include <QJsonArray>
#include <QMimeData>
#include <QPainter>
#include <QPdfWriter>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QByteArray photo(int side)
{
    QImage image(side, side, QImage::Format_RGB32);
    image.fill(Qt::darkGreen);
    image.setText(u"Author"_s, u"marked words"_s);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QBuffer::WriteOnly);
    image.save(&buffer, "png");
    return bytes;
}

class AttachmentsInWindowTest : public AppFixture {
protected:
    QString save(const QString &name, const QByteArray &bytes)
    {
        QFile file(folder.filePath(name));
        EXPECT_TRUE(file.open(QFile::WriteOnly) && file.write(bytes) == bytes.size());
        return file.fileName();
    }
    QString savePDF(const QString &name, const QString &words)
    {
        QPdfWriter writer(folder.filePath(name));
        QPainter(&writer).drawText(500, 500, words);
        return folder.filePath(name);
    }

    // As another program's drag of these files, over the list of chats.
    void drop(const QStringList &paths)
    {
        QMimeData data;
        QList<QUrl> files;
        for (const QString &path : paths)
            files += QUrl::fromLocalFile(path);
        data.setUrls(files);
        drop(data);
    }
    void drop(const QMimeData &data)
    {
        const auto actions = Qt::CopyAction | Qt::MoveAction;
        QDragEnterEvent enter(QPoint(60, 300), actions, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(window(), &enter);
        WindowDriver::settle();
        EXPECT_TRUE(WindowDriver::item(window(), u"dropOverlay"_s));
        QDropEvent dropped(QPoint(60, 300), actions, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(window(), &dropped);
        EXPECT_EQ(dropped.dropAction(), Qt::CopyAction) << "the file stays where it is";
        WindowDriver::settle();
        EXPECT_FALSE(WindowDriver::item(window(), u"dropOverlay"_s));
    }
    [[nodiscard]] bool isRead() const
    {
        const bool isRead = WindowDriver::eventually([this] { return !desk().isReading(); });
        WindowDriver::settle();
        return isRead;
    }
    [[nodiscard]] AttachmentDesk &desk() const { return *chat().entries()->attachments(); }
    // The newest message that the server got.
    [[nodiscard]] QJsonValue received()
    {
        return server.chats().back().json()["messages"_L1].toArray().last()["content"_L1];
    }
    static void copy(const QString &format, const QByteArray &bytes)
    {
        auto data = std::make_unique<QMimeData>();
        data->setData(format, bytes);
        QGuiApplication::clipboard()->setMimeData(data.release());
    }

    QTemporaryDir folder;
};

TEST_F(AttachmentsInWindowTest, WhatIsDroppedGoesWithTheMessageAsTextBetweenMarkersOrAsABarePicture)
{
    drop({savePDF(u"plan.pdf"_s, u"Ship on Friday"_s)});
    ASSERT_TRUE(isRead());
    ASSERT_NE(item(u"attachmentChip"_s), nullptr);
    say(u"When?"_s);
    ASSERT_TRUE(turnEnds());
    const QString sent = received().toString();
    EXPECT_TRUE(sent.startsWith(u"--- BEGIN UNTRUSTED CONTENT (the document “plan.pdf”, id "_s))
        << sent.toStdString();
    EXPECT_TRUE(sent.contains(u"Ship on Friday\n--- END"_s));
    EXPECT_TRUE(sent.endsWith(u"User request: When?"_s));
    EXPECT_EQ(item(u"attachmentChip"_s), nullptr);

    drop({savePDF(u"none.pdf"_s, {}), save(u"a.rtf"_s, "{\\rtf1 one {\\b two}}"), save(u"b.exe"_s, "MZ")});
    ASSERT_TRUE(isRead());
    EXPECT_EQ(desk().name(), u"a.rtf"_s);
    EXPECT_EQ(chat().banner().message, u"“exe” files are not supported."_s);
    WindowDriver::click(item(u"attachmentActions"_s));
    ASSERT_NE(item(u"quickAction"_s), nullptr);
    WindowDriver::click(item(u"quickAction"_s));
    ASSERT_TRUE(turnEnds());
    EXPECT_TRUE(received().toString().contains(u"one two\n--- END"_s));
    EXPECT_TRUE(received().toString().endsWith(u"User request: Summarize this concisely."_s));

    drop({save(u"photo.PNG"_s, photo(2000))});
    ASSERT_TRUE(isRead());
    EXPECT_EQ(desk().thumbnail().pixelColor(48, 48), QColor(Qt::darkGreen));
    say(u"Where is it?"_s);
    ASSERT_TRUE(turnEnds());
    const QJsonArray parts = received().toArray();
    ASSERT_EQ(parts.size(), 2);
    const QByteArray address = parts[1]["image_url"_L1]["url"_L1].toString().toLatin1();
    ASSERT_TRUE(address.startsWith("data:image/jpeg;base64,"));
    const QByteArray jpeg = QByteArray::fromBase64(address.sliced(address.indexOf(',') + 1));
    EXPECT_EQ(QImage::fromData(jpeg, "jpeg").size(), QSize(1536, 1536));
    EXPECT_FALSE(jpeg.contains("marked"));
    EXPECT_FALSE(jpeg.contains("Exif"));
}

TEST_F(AttachmentsInWindowTest, PastedFilesAndPicturesAreAttachedAndTextIsText)
{
    copy(u"image/png"_s, photo(40));
    WindowDriver::press(window(), Qt::Key_V, Qt::ControlModifier);
    ASSERT_TRUE(isRead());
    EXPECT_EQ(desk().name(), u"Pasted image"_s);
    copy(u"text/uri-list"_s, QUrl::fromLocalFile(save(u"notes.md"_s, "# Notes")).toEncoded());
    WindowDriver::press(window(), Qt::Key_V, Qt::ControlModifier);
    ASSERT_TRUE(isRead());
    EXPECT_EQ(desk().name(), u"notes.md"_s);
    QGuiApplication::clipboard()->setText(u"words"_s);
    WindowDriver::press(window(), Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(chat().draft(), u"words"_s);
    EXPECT_EQ(desk().name(), u"notes.md"_s);
    QMimeData text;
    text.setText(u"dragged"_s);
    drop(text);
    EXPECT_EQ(chat().draft(), u"words dragged"_s);

    // By keys alone: into the menu of ways, and to what is attached.
    item(u"composerActions"_s)->forceActiveFocus(Qt::TabFocusReason);
    WindowDriver::press(window(), Qt::Key_Space);
    EXPECT_EQ(item(u"lookAtScreen"_s)->height(), 0) << "nothing here looks at it";
    WindowDriver::press(window(), Qt::Key_Down);
    WindowDriver::press(window(), Qt::Key_Down);
    WindowDriver::press(window(), Qt::Key_Return);
    EXPECT_EQ(desk().name(), u"Clipboard text"_s);
}

TEST_F(AttachmentsInWindowTest, AModelThatSeesNothingIsToldOfBeforeThePictureIsSent)
{
    ModelServer blind(ModelServer::Interface::ollama, {{u"blind:3b"_s, {u"completion"_s}}});
    state->storage().settings->setBaseURLString(blind.baseUrl());
    useModel(u"blind:3b"_s);
    drop({save(u"a.png"_s, photo(8))});
    ASSERT_TRUE(WindowDriver::eventually([&] { return chat().hasBanner(); }));
    EXPECT_EQ(chat().banner().message, u"blind:3b can't see images."_s);
    EXPECT_TRUE(item(u"modelNotice"_s));
    WindowDriver::click(item(u"removeAttachment"_s));
    EXPECT_FALSE(chat().hasBanner());
    EXPECT_EQ(blind.chats().size(), 0U);
}

} // namespace

} // namespace morvane
