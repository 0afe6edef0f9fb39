// SPDX-License-Identifier: MIT
//
// Slots, files: the commands that load and save settings files and session descriptions. What stands in
// them is the business of files/; here values are collected, files opened and answers applied.
#include "app/dialog/private.h"
#include "channel/channelstore.h"
#include "files/fileload.h"
#include "files/sdpreader.h"
#include "files/sdpwriter.h"
#include "files/settingsfile.h"
#include "rkos.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QPointer>

namespace {

constexpr int kLineBytes = 4096;
constexpr int kPathBytes = 4096;
constexpr int kFolderMode = 777; // the digits of the mode in decimal, as the library wants them

// The wait cursor while a file is read or written.
class WaitCursor {
public:
    WaitCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
    ~WaitCursor() { QApplication::restoreOverrideCursor(); }
    WaitCursor(const WaitCursor &) = delete;
    WaitCursor &operator=(const WaitCursor &) = delete;
};

quint64 openForReading(const QString &path)
{
    return rkOSCreateFile(path.toUtf8().constData(), RKOS_GENERIC_READ, RKOS_SHARE_READ, nullptr,
                          RKOS_OPEN_EXISTING, RKOS_ATTRIBUTE_NORMAL, nullptr);
}

quint64 createForWriting(const QString &path)
{
    return rkOSCreateFile(path.toUtf8().constData(), RKOS_GENERIC_WRITE, RKOS_SHARE_READ, nullptr,
                          RKOS_CREATE_ALWAYS, RKOS_ATTRIBUTE_NORMAL, nullptr);
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

// Told by the letters behind the last ".", in lower case only.
bool isSessionDescription(const QString &path)
{
    return QFileInfo(path).suffix() == QLatin1String("sdp");
}

QString settingsFolder()
{
    char folder[kPathBytes] = {};
    rkOSGetDocumentsDir(folder);
    return QString::fromUtf8(folder) + QLatin1String("2110/");
}

QString settingsFilter()
{
    return QCorvel::tr(
        "Settings File (*.ipp);; Session Description File (*.sdp);; Text File (*.txt);; All files (*.*)");
}

// Saving the settings ends the override, in the store and in the file. The flow count shown holds for
// every channel of the file. Nothing follows a section that could not be written.
void saveSettings(QCorvel *q, const QString &path)
{
    const quint64 file = createForWriting(path);
    if (file == RKOS_INVALID_HANDLE)
        return;
    for (const QByteArray &piece : settingsHeader())
        rkOSfputs(piece.constData(), file);
    setGlobalDword(StorePath::AvHAL, MachineValue::NmosOverride, 0);
    commitStore();
    const auto value = [q](const char *name, bool isString, int channel) {
        return q->cfgValue(name, isString, channel);
    };
    const int flows = q->m_pComboAudFlow->currentData().toInt();
    for (int channel = 0; channel < q->m_pChannel->count(); ++channel) {
        if (rkOSfputs(settingsSection(value, channel, flows).constData(), file) < 0)
            break;
    }
    rkOSCloseFile(file);
}

// A file that cannot be created is passed over; the other one of the pair is still tried.
void writeSdpFile(const QString &path, const QString &text)
{
    const quint64 file = createForWriting(path);
    if (file != RKOS_INVALID_HANDLE)
        rkOSfputs(text.toLocal8Bit().constData(), file);
    rkOSCloseFile(file);
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

// All three elements, always of channel 0.
void saveSdpFiles(const QCorvel *q, const QString &answer)
{
    const SdpFileNames names = sdpFileNames(answer);
    const SdpInput input = sdpInput(q, 0);
    writeSdpFile(names.rx, writeFileSdp(input, Side::Receive));
    writeSdpFile(names.tx, writeFileSdp(input, Side::Send));
}

} // namespace

// --------------------------------------------------------------------------------------------------- saving

void QCorvel::save()
{
    QString folder = m_lastPath;
    if (folder.isEmpty()) {
        folder = settingsFolder();
        if (!rkOSFileExists(folder.toUtf8().constData()))
            rkOSMakeDir(folder.toUtf8().constData(), kFolderMode);
    }
    const QPointer<QCorvel> self(this); // a host may delete the dialog meanwhile
    const QString answer = QDir::toNativeSeparators(QFileDialog::getSaveFileName(
        nullptr, tr("Ini File"), folder, settingsFilter(), nullptr, QFileDialog::DontUseNativeDialog));
    if (!self)
        return;
    // Before the answer is looked at: a cancelled dialog leads to the current folder.
    m_lastPath = QFileInfo(answer).absoluteDir().absolutePath();
    if (answer.isEmpty())
        return;
    const WaitCursor wait;
    if (isSessionDescription(answer)) {
        saveSdpFiles(this, answer);
        return;
    }
    saveSettings(this, answer);
    d->nmosOverride = 0; // our own doing, so the box stays as it is
}

void QCorvel::saveElement()
{
    const int channel = d->channel();
    const QPointer<QCorvel> self(this);
    const QString answer = QDir::toNativeSeparators(
        QFileDialog::getSaveFileName(nullptr, tr("Save Current Element"), QString(),
                                     tr("Session File(*.sdp);; Text File (*.txt);; All files (*.*)"), nullptr,
                                     QFileDialog::DontUseNativeDialog));
    if (!self)
        return;
    const SdpFileNames names = sdpFileNames(answer);
    const SdpInput input = sdpInput(this, channel);
    char grandmaster[64] = {}; // asked for with the identifier, not part of the text
    char domain[64] = {};
    rkPTPGetGrandmasterID(hPTP, grandmaster);
    rkPTPGetDomain(hPTP, domain);
    if (answer.isEmpty())
        return;
    const Element element = isVideo() ? Element::Video : isAudio() ? Element::Audio : Element::Anc;
    writeSdpFile(names.rx, writeElementSdp(input, element, Side::Receive));
    writeSdpFile(names.tx, writeElementSdp(input, element, Side::Send));
}

// -------------------------------------------------------------------------------------------------- loading

// Only saving moves the folder that both dialogs start in.
void QCorvel::load()
{
    const QString folder = m_lastPath.isEmpty() ? settingsFolder() : m_lastPath;
    const QPointer<QCorvel> self(this);
    const QString answer = QDir::toNativeSeparators(QFileDialog::getOpenFileName(
        nullptr, tr("Ini File"), folder, settingsFilter(), nullptr, QFileDialog::DontUseNativeDialog));
    if (!self || answer.isEmpty() || !rkOSFileExists(answer.toUtf8().constData()))
        return;
    const quint64 file = openForReading(answer);
    if (file == RKOS_INVALID_HANDLE)
        return;
    const WaitCursor wait;
    setCfgValue(FirstChannelValue::LastConfigPath, QFileInfo(answer).absoluteDir().absolutePath(), true, 0);
    bool toTheEnd = true;
    QByteArray line;
    if (readLine(file, line)) {
        if (isSettingsSignature(line))
            toTheEnd = loadSettingsFile([file](QByteArray &next) { return readLine(file, next); }).end ==
                       SettingsLoadEnd::EndOfFile;
        else if (isSessionDescription(answer))
            loadSdp(file);
        else
            ErrOut("Not a valid config file");
    }
    rkOSCloseFile(file);
    commitStore();
    if (toTheEnd)
        loadDataStandAlone();
    else
        loadData();
}

// A value whose lock is set stays as it is and ticks nothing. What was ticked is stored as well, so that the
// refresh that follows shows it.
void QCorvel::loadSdp(quint64 file)
{
    const SignalBracket bracket(this);
    const QList<SdpStore> values = readSdp([file](QByteArray &line) { return readLine(file, line); });
    const quint32 ticked = storeSessionDescription(values, m_LockValues, d->channel());
    for (const FlagBit &row : flagBits()) {
        if (ticked & row.bit)
            d->networkField(Side::Receive, row.field).use->setChecked(true);
    }
    commitStore();
}
