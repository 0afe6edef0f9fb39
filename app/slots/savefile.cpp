// SPDX-License-Identifier: MIT
//
// Slots, files: stored values go into a settings file or into session descriptions, and the line in the
// command band tells what came of it. What is written is the business of files/.
#include "app/slots/filework.h"
#include "app/view/filenews.h"
#include "app/view/fileprogress.h"
#include "channel/channelstore.h"
#include "files/sdpwriter.h"
#include "files/settingsfile.h"
#include "files/storedsections.h"
#include "rkos.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>

namespace {

constexpr int kTellSeconds = 10;
constexpr int kLinesBesideValues = 2; // of a section: its head and the empty line at its end

quint64 createForWriting(const QString &path)
{
    return rkOSCreateFile(path.toUtf8().constData(), RKOS_GENERIC_WRITE, RKOS_SHARE_READ, nullptr,
                          RKOS_CREATE_ALWAYS, RKOS_ATTRIBUTE_NORMAL, nullptr);
}

QString cannotBeCreated()
{
    return QCorvel::tr("it cannot be created here");
}

QString isIncomplete()
{
    return QCorvel::tr("it could not be written to its end");
}

// One save of the settings: the sections that are in the file, and what there is to tell.
class SettingsSave {
public:
    SettingsSave(const QString &path, quint64 file)
        : m_path(path), m_file(file), m_progress(QCorvel::tr("Save File"))
    {
    }

    // False when nothing may follow: the file takes no more, the user has enough, or the dialog is gone.
    bool writeSection(const QByteArray &section);
    void writeSections(const FileWork &work, const QCorvel *q);
    void close() { m_isWhole = rkOSCloseFile(m_file) && m_isWhole; }
    QString news() const;

private:
    QString m_path;
    quint64 m_file;
    FileProgress m_progress;
    FileNews::Counts m_counts;
    bool m_isWhole = true;
};

bool SettingsSave::writeSection(const QByteArray &section)
{
    m_isWhole = rkOSfputs(section.constData(), m_file) >= 0;
    if (!m_isWhole)
        return false;
    ++m_counts.channels;
    m_counts.values += section.count('\n') - kLinesBesideValues;
    return true;
}

// The flow count shown holds for every channel of the file. Nothing follows a section that could not be
// written.
void SettingsSave::writeSections(const FileWork &work, const QCorvel *q)
{
    StoredSections sections(q->m_pComboAudFlow->currentData().toInt());
    const int channels = q->m_pChannel->count();
    for (int channel = 0; channel < channels; ++channel) {
        const bool goesOn = m_progress.step(channel, channels, m_counts.values) && work.isWanted();
        if (!goesOn || !writeSection(sections.section(channel)))
            return;
    }
}

QString SettingsSave::news() const
{
    if (m_progress.isCancelled())
        return FileNews::saveCutShort(m_path, m_counts);
    return m_isWhole ? FileNews::saved(m_path, m_counts) : FileNews::notSaved(m_path, isIncomplete());
}

// What became of one file of a pair; empty: it is there.
QString writeDescription(const QString &path, const QString &text)
{
    const quint64 file = createForWriting(path);
    const bool created = file != RKOS_INVALID_HANDLE;
    const bool written = created && rkOSfputs(text.toLocal8Bit().constData(), file) >= 0;
    const bool closed = rkOSCloseFile(file);
    if (written && closed)
        return QString();
    return created ? isIncomplete() : cannotBeCreated();
}

// What is shown goes into a session description, except for the values: those come from the store.
SdpInput sdpInput(const QCorvel *q, int channel)
{
    SdpInput input;
    input.value = [q, channel](const char *name, bool isString) {
        return q->cfgValue(name, isString, channel);
    };
    q->getSignalFormatValues(&input.width, &input.height, &input.rate);
    input.recSrc = q->m_pCheckRecSrcAddr->isChecked();
    input.recDst = q->m_pCheckRecDstAddr->isChecked();
    input.sndSrc = q->m_pCheckSndSrcAddr->isChecked();
    input.sndDst = q->m_pCheckSndDstAddr->isChecked();
    input.useGmId = q->m_pUseGmId->isChecked();
    input.clockIndex = q->m_pComboClkSrc->currentIndex();
    input.gmAddress = q->m_pEditGmAddress->text();
    input.gmDomain = q->m_pEditGmId->text();
    input.flows = q->m_pComboAudFlow->currentData().toInt();
    input.sessionId = rkOSGetMicro();
    return input;
}

// A file that cannot be created is passed over; the other one of the pair is still tried.
QString writePair(const SdpFileNames &names, const QString &rx, const QString &tx)
{
    const QString rxFault = writeDescription(names.rx, rx);
    const QString txFault = writeDescription(names.tx, tx);
    const QString rxName = FileNews::nameOf(names.rx), txName = FileNews::nameOf(names.tx);
    if (rxFault.isEmpty() && txFault.isEmpty())
        return QCorvel::tr("Saved %1 and %2").arg(rxName, txName);
    if (!rxFault.isEmpty() && !txFault.isEmpty())
        return FileNews::notSaved(names.rx, rxFault) + QLatin1String("; ") +
               FileNews::notSaved(names.tx, txFault);
    const QString saved = rxFault.isEmpty() ? rxName : txName;
    return FileNews::notSaved(rxFault.isEmpty() ? names.tx : names.rx, rxFault + txFault) +
           QCorvel::tr("; saved %1").arg(saved);
}

} // namespace

// Saving the settings ends the override, in the store and in the file.
void QCorvelPrivate::saveSettings(const QString &path)
{
    const FileWork work(this);
    const quint64 file = createForWriting(path);
    if (file == RKOS_INVALID_HANDLE) {
        tell(FileNews::notSaved(path, cannotBeCreated()), kTellSeconds);
        return;
    }
    for (const QByteArray &piece : settingsHeader())
        rkOSfputs(piece.constData(), file);
    write([] { setGlobalDword(StorePath::AvHAL, MachineValue::NmosOverride, 0); });
    nmosOverride = 0; // our own doing, so the box stays as it is
    SettingsSave save(path, file);
    save.writeSections(work, q);
    save.close();
    if (work.isWanted())
        tell(save.news(), kTellSeconds);
}

// All three elements, always of channel 0.
void QCorvelPrivate::saveDescriptions(const QString &path)
{
    const FileWork work(this);
    const SdpInput input = sdpInput(q, 0);
    tell(writePair(sdpFileNames(path), writeFileSdp(input, Side::Receive), writeFileSdp(input, Side::Send)),
         kTellSeconds);
}

// The clock is asked before the answer is looked at.
void QCorvelPrivate::saveElementDescriptions(const QString &path, int channel)
{
    const SdpInput input = sdpInput(q, channel);
    char grandmaster[64] = {}; // asked for with the identifier, not part of the text
    char domain[64] = {};
    rkPTPGetGrandmasterID(q->hPTP, grandmaster);
    rkPTPGetDomain(q->hPTP, domain);
    if (path.isEmpty())
        return;
    const Element element = q->isVideo() ? Element::Video : q->isAudio() ? Element::Audio : Element::Anc;
    tell(writePair(sdpFileNames(path), writeElementSdp(input, element, Side::Receive),
                   writeElementSdp(input, element, Side::Send)),
         kTellSeconds);
}
