// SPDX-License-Identifier: MIT
#include "app/view/clocktext.h"

#include "app/view/digitgroups.h"

QByteArray ptpClockInfo(const QByteArray &version, const QByteArray &domain, const QByteArray &portId)
{
    return version + " D:" + domain + ' ' + portId;
}

QByteArray ptpClockTime(const QByteArray &date, const QByteArray &time, qint64 offsetNs)
{
    return clockTime(date, time) + '(' + digitGroups(offsetNs) + " ns)";
}

QByteArray clockTime(const QByteArray &date, const QByteArray &time)
{
    return date + ' ' + time + ' ';
}
