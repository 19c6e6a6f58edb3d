#include "ai/local/RuntimeInstallation.h"

#include "ai/local/ArchiveUnpacking.h"
#include "ai/local/LocalSetupError.h"
#include "ai/local/RuntimeRecord.h"
#include "ai/local/SetupLog.h"
#include "async/CancelledError.h"
#include "security/LocalDataVault.h"
#include "security/SealedForm.h"
#include "utils/files/PrivateFile.h"
#include "utils/log/Log.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype largestRecord = qsizetype{16} << 20;

// Everything that was written there is on the disk before anything says that it is.
void syncDisk(const QString &folder)
{
    const int descriptor = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        throw FileError(FileError::Operation::Open, errno);
    const int result = ::syncfs(descriptor);
    const int status = errno;
    ::close(descriptor);
    if (result != 0)
        throw FileError(FileError::Operation::Sync, status);
}

// Without the key nothing can be said about the record, good or bad.
void requireKey(const LocalDataVault &vault)
{
    try {
        static_cast<void>(vault.key());
    } catch (const std::exception &) {
        throw LocalSetupError(
            u"The local AI runtime can't be checked while your data is locked. Try again when "
            u"it is open."_s);
    }
}

[[noreturn]] void failUnpacking(SetupLog &log, int code, bool isDiskFull)
{
    log.write(u"runtime unpack failed (tar exit %1)"_s.arg(code));
    if (isDiskFull)
        throw LocalSetupError(
            u"The disk is full, so the AI runtime couldn't be unpacked. Free up some space and "
            u"try again."_s);
    throw LocalSetupError(u"The downloaded AI runtime couldn't be unpacked. Try again."_s);
}

} // namespace

RuntimeInstallation::RuntimeInstallation(LocalRuntimeValues values, const LocalDataVault &vault,
                                         std::shared_ptr<SetupLog> log)
    : m_values(std::move(values))
    , m_vault(&vault)
    , m_log(std::move(log))
{}

bool RuntimeInstallation::exists() const
{
    return QFileInfo::exists(m_values.binary());
}

// The record comes before the files: without files it says nothing, and files without it don't run.
void RuntimeInstallation::install(const QString &archive, const std::stop_token &stop) const
{
    const std::lock_guard lock(*m_turn);
    throwIfStopped(stop);
    removeLeftovers();
    requireKey(*m_vault);
    try {
        PrivateFile::createFolder(staging());
        ArchiveUnpacking::unpack(archive, staging(), {}, stop);
        const RuntimeRecord record = RuntimeRecord::of(staging(), m_values.version, stop);
        if (!record.files.contains(u"bin/ollama"_s))
            failUnpacking(*m_log, ENOENT, false);
        syncDisk(staging());
        remove();
        LocalDataVault::writePrivate(m_vault->seal(record.json()), m_values.seal());
        if (QFileInfo::exists(staging() + u"/lib"_s))
            PrivateFile::move(staging() + u"/lib"_s, m_values.libraries());
        PrivateFile::move(staging() + u"/bin"_s, QFileInfo(m_values.binary()).path());
    } catch (const ArchiveUnpacking::Failure &failure) {
        removeLeftovers();
        failUnpacking(*m_log, failure.code(),
                      failure.reason() == ArchiveUnpacking::Failure::Reason::diskFull);
    } catch (const FileError &error) {
        removeLeftovers();
        failUnpacking(*m_log, error.status(), error.status() == ENOSPC || error.status() == EDQUOT);
    }
    removeLeftovers();
}

std::optional<QByteArray> RuntimeInstallation::record() const
{
    try {
        const auto contents = PrivateFile::read(m_values.seal(), largestRecord);
        return contents && SealedForm::isSealedFile(*contents) ? m_vault->open(*contents) : std::nullopt;
    } catch (const FileError &) {
        return std::nullopt;
    }
}

void RuntimeInstallation::keepRecord(const QByteArray &contents) const
{
    try {
        LocalDataVault::writePrivate(m_vault->seal(contents), m_values.seal());
    } catch (const std::exception &) {
        // The next check finds no record that opens, and says so.
    }
}

bool RuntimeInstallation::verify(const std::stop_token &stop) const
{
    const std::lock_guard lock(*m_turn);
    throwIfStopped(stop);
    requireKey(*m_vault);
    bool isSame = false;
    try {
        const auto contents = PrivateFile::read(m_values.seal(), largestRecord);
        // One that isn't sealed was not written here.
        const bool isSealed = contents && SealedForm::isSealedFile(*contents);
        const auto plain = isSealed ? m_vault->open(*contents) : std::nullopt;
        const auto record = plain ? RuntimeRecord::parse(*plain) : std::nullopt;
        isSame = record && *record == RuntimeRecord::of(m_values.folder, record->version, stop);
    } catch (const FileError &) {
        // What can't be read can't be vouched for.
    }
    if (isSame)
        return true;
    remove();
    Log::error(Log::Category::AIProvider, "Managed runtime failed verification at launch; deleted"_L1);
    m_log->write(u"managed runtime failed verification at launch; deleted"_s);
    return false;
}

// The program itself first: what is left of the rest is no runtime.
void RuntimeInstallation::remove() const
{
    QFile::remove(m_values.binary());
    for (const QString &folder : {QFileInfo(m_values.binary()).path(), m_values.libraries()}) {
        if (QFileInfo(folder).isSymLink())
            QFile::remove(folder);
        else
            QDir(folder).removeRecursively();
    }
    QFile::remove(m_values.seal());
}

void RuntimeInstallation::removeLeftovers() const
{
    QDir(staging()).removeRecursively();
}

} // namespace morvane
