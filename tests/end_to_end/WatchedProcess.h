#pragma once

#include "support/Await.h"
#include "support/TextForms.h"
#include "utils/files/PrivateFile.h"

#include <QDirIterator>
#include <QHash>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

namespace morvane {

using namespace Qt::StringLiterals;

// A process with all that it starts, below a tracer that notes each file they touch and every byte they
// write. Its folders are its own.
class WatchedProcess {
public:
    enum class Trace { yes, no };

    WatchedProcess(const QString &program, const QStringList &words,
                   const QHash<QString, QString> &variables = {}, Trace tracing = Trace::yes)
    {
        auto environment = QProcessEnvironment::systemEnvironment();
        for (const auto &[name, folder] :
             {std::pair("HOME", "home"), std::pair("TMPDIR", "tmp"), std::pair("XDG_RUNTIME_DIR", "run")}) {
            QDir(m_folder.path()).mkpath(QLatin1StringView(folder));
            QFile::setPermissions(path(QLatin1StringView(folder)), QFile::Permissions(0x7700));
            environment.insert(QLatin1StringView(name), path(QLatin1StringView(folder)));
        }
        for (const auto &name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"})
            environment.remove(QLatin1StringView(name));
        PrivateFile::write(theirFile(), "DroppedMARK and KeptMARK stand in a file of the person's own.");
        environment.insert(u"MORVANE_GHOST_FILE"_s, theirFile());
        // Leaks can't be looked for in a process that is being traced.
        environment.insert(u"ASAN_OPTIONS"_s, environment.value(u"ASAN_OPTIONS"_s) + u":detect_leaks=0"_s);
        for (auto each = variables.begin(); each != variables.end(); ++each)
            environment.insert(each.key(), each.value());
        m_process.setProcessEnvironment(environment);
        if (tracing == Trace::no)
            m_process.start(program, words);
        else
            m_process.start(
                u"strace"_s,
                QStringList{u"-f"_s, u"--seccomp-bpf"_s, u"-qqq"_s, u"-yy"_s, u"-s"_s, u"10000000"_s, u"-e"_s,
                            u"signal=none"_s, u"-e"_s,
                            u"trace=openat,open,creat,rename,renameat,renameat2,link,linkat,symlink,"
                            "symlinkat,mkdir,mkdirat,mknod,mknodat,setxattr,fsetxattr,lsetxattr,"
                            "write,pwrite64,writev,pwritev,pwritev2,sendto,sendmsg,sendmmsg,"
                            "sendfile,splice,copy_file_range,mmap"_s,
                            u"-o"_s, trace(), program} +
                    words);
    }
    ~WatchedProcess()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    // The process comes to that stage; what it prints until then is kept.
    [[nodiscard]] bool reaches(const QByteArray &stage)
    {
        TestWait::until([&] { return printed().contains("stage " + stage + "\n") || isOver(); });
        return m_printed.contains("stage " + stage + "\n");
    }
    void goOn() { m_process.write("\n"); }
    [[nodiscard]] bool ends()
    {
        m_process.closeWriteChannel();
        TestWait::until([this] { return isOver(); });
        return m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0;
    }
    [[nodiscard]] const QByteArray &printed()
    {
        m_printed += m_process.readAllStandardOutput() + m_process.readAllStandardError();
        return m_printed;
    }

    // Where the mark has come to: in files that lie there, in what was ever written to one, in names, in what
    // other programs here were told, and in what was printed.
    [[nodiscard]] QStringList leaksOf(const QByteArray &mark)
    {
        QStringList leaks;
        const QByteArrayList forms = formsOf(QString::fromLatin1(mark));
        const auto look = [&](const QString &place, const QByteArray &bytes) {
            for (const QByteArray &form : forms) {
                if (bytes.contains(form))
                    leaks += place;
            }
        };
        look(u"printed"_s, printed());
        for (const QString &file : filesThatLieThere()) {
            QFile contents(file);
            if (contents.open(QIODevice::ReadOnly))
                look(file, contents.readAll());
        }
        for (const QByteArray &line : tracedLines()) {
            if (staysOnThisMachine(line))
                look(QString::fromUtf8(line.first(std::min<qsizetype>(line.size(), 200))), unescaped(line));
        }
        return leaks;
    }

    // Calls so far that wrote to a file in a folder of that name.
    [[nodiscard]] qsizetype writesBelow(const QByteArray &folder) const
    {
        const auto lines = tracedLines();
        return std::ranges::count_if(lines, [&folder](const QByteArray &line) {
            return isWrite(line) && line.contains('/' + folder + '/');
        });
    }
    // Files outside of its folders that it opened for writing.
    [[nodiscard]] QStringList writtenElsewhere() const
    {
        static const QRegularExpression opened(
            uR"~(open(?:at)?\([^"]*"([^"]+)", [^,)]*O_(?:WRONLY|RDWR|CREAT))~"_s);
        QStringList paths;
        for (const QByteArray &line : tracedLines()) {
            const auto match =
                opened.match(QString::fromUtf8(line.first(std::min<qsizetype>(line.size(), 5000))));
            const QString path = match.captured(1);
            if (match.hasMatch() && !line.contains(" = -1 ") && !path.startsWith(m_folder.path()) &&
                !path.startsWith(u"/dev/"_s) && !path.startsWith(u"/proc/"_s))
                paths += path;
        }
        return paths;
    }
    [[nodiscard]] qsizetype traced() const { return tracedLines().size(); }

private:
    [[nodiscard]] QString path(const QString &name) const { return m_folder.filePath(name); }
    [[nodiscard]] QString theirFile() const { return m_theirs.filePath(u"theirs.txt"_s); }
    [[nodiscard]] QString trace() const { return m_theirs.filePath(u"trace"_s); }
    [[nodiscard]] bool isOver() const { return m_process.state() == QProcess::NotRunning; }

    // Those of its folders, and those that were written anywhere else.
    [[nodiscard]] QStringList filesThatLieThere() const
    {
        QStringList files = writtenElsewhere();
        for (QDirIterator all(m_folder.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
             all.hasNext();)
            files += all.next();
        return files;
    }
    [[nodiscard]] QList<QByteArray> tracedLines() const
    {
        QFile file(trace());
        return file.open(QIODevice::ReadOnly) ? file.readAll().split('\n') : QList<QByteArray>();
    }
    static bool isWrite(const QByteArray &line)
    {
        static const QRegularExpression write(uR"(^\d+ +p?write(?:64|v|v2)?\(\d+<)"_s);
        return write.match(QString::fromLatin1(line.first(std::min<qsizetype>(line.size(), 60)))).hasMatch();
    }
    // Anything but a connection over the network, which is what a chat is for, and a pipe, whose readers are
    // watched as well.
    static bool staysOnThisMachine(const QByteArray &line)
    {
        const QByteArray call = line.first(std::min<qsizetype>(line.size(), 80));
        return !call.contains("<TCP") && !call.contains("<pipe:");
    }
    // The tracer writes bytes that are no letters as octal numbers.
    static QByteArray unescaped(QByteArray line)
    {
        return line.contains(R"(\0)") ? line.replace(R"(\0)", QByteArray(1, '\0')) : line;
    }

    QTemporaryDir m_folder;
    QTemporaryDir m_theirs; // what the person and the test have there themselves
    QProcess m_process;
    QByteArray m_printed;
};

} // namespace morvane
