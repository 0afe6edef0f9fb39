// SPDX-License-Identifier: MIT
//
// Slots, files: a file goes into the store as one step, and the line in the command band tells what came of
// it. What stands in the file is the business of files/.
#include "app/slots/filework.h"
#include "app/view/filenews.h"
#include "app/view/fileprogress.h"
#include "channel/channelstore.h"
#include "channel/storecalls.h"
#include "files/fileload.h"
#include "files/sdpreader.h"
#include "files/settingsfile.h"
#include "rkos.h"

#include <QCheckBox>
#include <QDir>

#include <optional>

namespace {

constexpr int kLineBytes = 4096;
constexpr int kTellSeconds = 10;

quint64 openForReading(const QString &path)
{
    return rkOSCreateFile(path.toUtf8().constData(), RKOS_GENERIC_READ, RKOS_SHARE_READ, nullptr,
                          RKOS_OPEN_EXISTING, RKOS_ATTRIBUTE_NORMAL, nullptr);
}

// The next line up to its first zero byte; false at the end of the file.
bool readLine(quint64 file, QByteArray &line)
{
    char buffer[kLineBytes] = {};
    if (!rkOSfgets(buffer, kLineBytes, file))
        return false;
    line = QByteArray(buffer);
    return true;
}

// One load of a file: what it read, and what there is to tell.
class FileLoad {
public:
    FileLoad(QCorvelPrivate *dialog, const FileWork &work, const QString &path, quint64 file, bool isOneStep)
        : m_dialog(dialog), m_work(work), m_path(path), m_file(file), m_isOneStep(isOneStep),
          m_size(QFileInfo(path).size()), m_progress(QCorvel::tr("Load File"))
    {
    }

    void read();
    bool isCancelled() const { return m_progress.isCancelled(); }
    bool endedEarly() const { return m_counts.endsEarly; }
    QString news(bool isStored) const;

private:
    bool nextLine(QByteArray &line);
    void readSettings();
    void readDescription();

    QCorvelPrivate *m_dialog;
    const FileWork &m_work;
    QString m_path;
    quint64 m_file;
    bool m_isOneStep;
    qint64 m_size;
    qint64 m_done = 0;
    FileProgress m_progress;
    FileNews::Counts m_counts;
    int m_channel = -1;    // of a session description
    QString m_nothingRead; // the reason
};

// A load that is one step may stop after any line, since all of it is taken back.
bool FileLoad::nextLine(QByteArray &line)
{
    const bool goesOn = m_progress.step(m_done, m_size, m_counts.values) || !m_isOneStep;
    if (!goesOn || !readLine(m_file, line))
        return false;
    m_done += line.size() + 1;
    return true;
}

void FileLoad::readSettings()
{
    SettingsLoad load;
    load.store = [this](const SettingsValue &value) {
        storeSettingsValue(value);
        ++m_counts.values;
    };
    load.betweenSections = [this](int) { return !isCancelled(); };
    const SettingsLoadResult result =
        loadSettingsFile([this](QByteArray &line) { return nextLine(line); }, load);
    m_counts.channels = result.channels;
    m_counts.interfaces = result.leftOut.interfaces;
    m_counts.unknown = result.leftOut.unknown;
    m_counts.beforeSections = result.leftOut.beforeSections;
    m_counts.endsEarly = result.end == SettingsLoadEnd::SectionBelowTheFirst;
    if (m_counts.values == 0)
        m_nothingRead = QCorvel::tr("it holds no values for a channel");
}

// Everything is read before anything is stored. The dialog may be gone by then.
void FileLoad::readDescription()
{
    const SdpStores values = readSdp([this](QByteArray &line) { return nextLine(line); });
    if (isCancelled() || !m_work.isWanted())
        return;
    m_channel = m_dialog->channel();
    const DescriptionLoad load = m_dialog->storeDescription(values);
    m_counts.values = load.stored;
    m_counts.locked = load.locked;
    if (load.stored + load.locked == 0)
        m_nothingRead = QCorvel::tr("it holds no address and no port");
}

void FileLoad::read()
{
    QByteArray line;
    if (!readLine(m_file, line)) {
        m_nothingRead = QCorvel::tr("it is empty");
    } else if (isSettingsSignature(line)) {
        readSettings();
    } else if (isSessionDescription(m_path)) {
        readDescription();
    } else {
        ErrOut("Not a valid config file");
        m_nothingRead = QCorvel::tr("it is no settings file");
    }
}

QString FileLoad::news(bool isStored) const
{
    if (isCancelled() && (m_isOneStep || m_counts.values == 0))
        return FileNews::loadTakenBack(m_path);
    if (isCancelled())
        return FileNews::loadCutShort(m_path, m_counts);
    if (!isStored)
        return FileNews::notLoaded(m_path, QCorvel::tr("the store could not take it"));
    if (!m_nothingRead.isEmpty())
        return FileNews::notLoaded(m_path, m_nothingRead);
    return m_channel < 0 ? FileNews::loaded(m_path, m_counts)
                         : FileNews::loadedDescription(m_path, m_channel, m_counts);
}

} // namespace

void QCorvelPrivate::loadFile(const QString &path)
{
    if (!rkOSFileExists(path.toUtf8().constData())) {
        tell(FileNews::notLoaded(path, QCorvel::tr("there is no such file")), kTellSeconds);
        return;
    }
    const quint64 file = openForReading(path);
    if (file == RKOS_INVALID_HANDLE) {
        tell(FileNews::notLoaded(path, QCorvel::tr("it cannot be opened")), kTellSeconds);
        return;
    }
    const FileWork work(this);
    labelNextBatch(QLatin1String("Load File ") + QFileInfo(path).fileName());
    UserStep step(this);
    if (step.isKept()) {
        rkOSCloseFile(file);
        tell(FileNews::notLoaded(path, QCorvel::tr("another program holds the store")), kTellSeconds);
        return;
    }
    std::optional<StoreTransaction> alone; // where the step cannot be one
    if (!step.isOneStep())
        alone.emplace();
    const bool isOneStep = step.isOneStep() || alone->isOpen();
    FileLoad load(this, work, path, file, isOneStep);
    stored = true; // of this load
    write([&] {
        setCfgValue(FirstChannelValue::LastConfigPath, QFileInfo(path).absoluteDir().absolutePath(), true, 0);
        load.read();
        rkOSCloseFile(file);
    });
    if (!work.isWanted())
        return;
    if (load.isCancelled()) {
        step.drop();
        alone.reset();
    }
    // A library without news need not mean by its results what ours does.
    const bool isWritten = stored || !storeTellsNews();
    const bool isStored = !load.isCancelled() && step.keep() && (!alone || alone->keep()) && isWritten;
    if (load.endedEarly())
        q->loadData();
    else
        q->loadDataStandAlone();
    tell(load.news(isStored), kTellSeconds);
}

// A value whose lock is set stays as it is and ticks nothing. What was ticked is stored as well, so that the
// refresh that follows shows it.
DescriptionLoad QCorvelPrivate::storeDescription(const SdpStores &values)
{
    const SignalBracket bracket(q);
    DescriptionLoad load;
    write([&] { load = storeSessionDescription(values, q->m_LockValues, channel()); });
    for (const FlagBit &row : flagBits()) {
        if (load.ticked & row.bit)
            networkField(Side::Receive, row.field).use->setChecked(true);
    }
    return load;
}

void QCorvel::loadSdp(quint64 file)
{
    const SignalBracket bracket(this);
    d->storeDescription(readSdp([file](QByteArray &line) { return readLine(file, line); }));
}
