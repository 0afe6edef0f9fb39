// SPDX-License-Identifier: MIT
//
// Slots, clock: keeps the software PTP client in line with the dialog and shows the clock a hundred times
// a second.
#include "app/dialog/private.h"
#include "app/dialog/styles.h"
#include "app/view/clocktext.h"
#include "app/view/combos.h"
#include "channel/channelstore.h"
#include "rkos.h"
#include "theme/lineaddress.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QTimerEvent>

#include <cstring>

namespace {

constexpr int kTextBytes = 64;
constexpr quint64 kNanosPerSecond = 1000000000;
constexpr quint32 kPtpTimeFormat = 0x210200;   // date, time with nanoseconds
constexpr quint32 kSystemTimeFormat = 0x10080; // date, time

void showLine(QLineEdit *edit, const QByteArray &text)
{
    showClockLine(edit, QString::fromUtf8(text));
}

void showSoftwareClock(QCorvel *q)
{
    char portId[kTextBytes] = {};
    char address[kTextBytes] = {}; // asked for like the others, not shown
    char domain[kTextBytes] = {};
    char version[kTextBytes] = {};
    rkPTPGetSourcePortID(q->hPTP, portId);
    rkPTPGetIPAddress(q->hPTP, address);
    rkPTPGetDomain(q->hPTP, domain);
    rkPTPGetVersion(q->hPTP, version);
    showLine(q->m_pComboClkMstr, ptpClockInfo(version, domain, portId));

    uint64_t seconds = 0;
    uint32_t nanoseconds = 0;
    rkPTPGetTime_Nano(q->hPTP, &seconds, &nanoseconds);
    char date[kTextBytes] = {};
    char time[kTextBytes] = {};
    rkOSGetEpochDateTimeString(seconds, date, time, nanoseconds, kPtpTimeFormat);
    int64_t offset = 0;
    rkPTPGetOffset_Nano(q->hPTP, &offset);
    showLine(q->m_pEditClockDomain, ptpClockTime(date, time, offset));
}

void showHardwareClock(QCorvel *q)
{
    showLine(q->m_pComboClkMstr, "Hardware/GMT Time");
    const quint64 now = rkOSGetTimePTPNano();
    char date[kTextBytes] = {};
    char time[kTextBytes] = {};
    rkOSGetEpochDateTimeString(now / kNanosPerSecond, date, time, static_cast<quint32>(now % kNanosPerSecond),
                               kPtpTimeFormat);
    showLine(q->m_pEditClockDomain, clockTime(date, time));
}

void showSystemClock(QCorvel *q)
{
    showLine(q->m_pComboClkMstr, "GMT Time");
    char date[kTextBytes] = {};
    char time[kTextBytes] = {};
    rkOSGetDateTimeString(date, time, kSystemTimeFormat);
    showLine(q->m_pEditClockDomain, clockTime(date, time));
}

} // namespace

void QCorvel::checkPTP()
{
    if (comboData(m_pComboClkSrc) != ClockSource::SoftwarePtp) {
        rkPTPEnd(hPTP);
        return;
    }
    QString address = QStringLiteral("0.0.0.0");
    if (m_pCheckSndDstIFace->isChecked())
        address = m_pEditSndIFace->address();
    else if (m_pCheckRecDstIFace->isChecked())
        address = m_pEditRecIFace->address();
    char interfaceAddress[sizeof m_szIPAddress];
    qstrncpy(interfaceAddress, address.toLatin1().constData(), sizeof interfaceAddress);
    const quint32 domain = toDword(m_pEditGmId->text()); // the number that is stored for it
    const QString grandmaster = m_pEditGmAddress->text();

    const bool asRunning = rkPTPGetStatus(hPTP, 0) != RKPTP_NO_CLIENT &&
                           strcmp(interfaceAddress, m_szIPAddress) == 0 && domain == m_dwPTPDom &&
                           grandmaster == m_szMacAddr;
    if (asRunning)
        return;
    memcpy(m_szIPAddress, interfaceAddress, sizeof m_szIPAddress);
    m_dwPTPDom = domain;
    m_szMacAddr = grandmaster;
    rkPTPEnd(hPTP);
    hPTP = rkPTPStart(m_szIPAddress);
    rkPTPSetTargetDomain(hPTP, domain);
    rkPTPSetTargetMacAddress(hPTP, grandmaster.toUtf8().constData());
}

void QCorvel::timerEvent(QTimerEvent *)
{
    d->notices.tick();
    d->showClockState();
    d->atTick();
    switch (comboData(m_pComboClkSrc)) {
    case ClockSource::SoftwarePtp:
        showSoftwareClock(this);
        break;
    case ClockSource::HardwarePtp:
        showHardwareClock(this);
        break;
    default:
        showSystemClock(this);
    }
}

void QCorvel::onUseGmId(bool checked)
{
    m_pEditGmAddress->setEnabled(checked);
    m_pEditGmAddress->setStyleSheet(QLatin1String(checked ? kEnabledStyle : kDisabledStyle));
}
