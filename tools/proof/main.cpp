#include "Commands.h"
#include "Help.h"
#include "Options.h"

#include "attestation/evidence/CaseText.h"

#include <QJsonDocument>

#include <cstdio>
#include <stdexcept>

using namespace morvane;
using namespace Qt::StringLiterals;

namespace {

enum ExitStatus { Passed = 0, Refused = 1, NotChecked = 2 };

// A verdict that nobody got to read must not count as given, so the bytes are pushed out at once.
void write(std::FILE *stream, const QByteArray &text)
{
    const auto size = static_cast<std::size_t>(text.size());
    if (std::fwrite(text.constData(), 1, size, stream) != size || std::fflush(stream) != 0)
        throw std::runtime_error("the answer can't be written");
}

// To standard error, which nobody has to read.
void say(const QByteArray &line)
{
    std::fputs((line + '\n').constData(), stderr);
}

// In JSON the verdict is a member of the object; the line goes to standard error, so that standard output
// stays one JSON text.
void print(const Report &report, Options::Output output)
{
    if (output == Options::Output::Text)
        return write(stdout, report.text().toUtf8());
    const QJsonObject object = report.json();
    write(stdout, QJsonDocument(object).toJson());
    say("verdict: " + object.value("verdict"_L1).toString().toUtf8());
}

int run(const QStringList &arguments)
{
    const Options options = Options::parse(arguments);
    if (options.command == Options::Command::Help) {
        write(stdout, Help::text().toUtf8());
        return Passed;
    }
    if (options.command == Options::Command::Version) {
        write(stdout, "morvane-proof " MORVANE_VERSION "\n");
        return Passed;
    }
    for (const QString &pin : options.replacedPins)
        say("WARNING: the " + pin.toUtf8() +
            " pin is replaced. This run proves nothing about real hardware.");
    const Report report = Commands::run(options);
    print(report, options.output);
    return report.isOk() ? Passed : Refused;
}

int notChecked(const QStringList &arguments, const QString &reason, const char *advice)
{
    Report report(u"Nothing was checked"_s);
    report.setVerdict(CaseText::of("notChecked"_L1, {CaseText::quoted(reason)}));
    say("morvane-proof: " + reason.toUtf8() + advice);
    try {
        print(report, Options::outputOf(arguments));
    } catch (const std::exception &) {
        // Nobody is there to read it; the exit status still says so.
    }
    return NotChecked;
}

} // namespace

int main(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    try {
        return run(arguments);
    } catch (const UsageError &error) {
        return notChecked(arguments, error.message(), ". morvane-proof --help explains.");
    } catch (const std::exception &error) {
        return notChecked(arguments, u"the machine failed: "_s + QString::fromLocal8Bit(error.what()), "");
    }
}
