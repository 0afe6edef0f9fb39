// SPDX-License-Identifier: MIT
#include "channel/lockbook.h"

QString lockName(const QByteArray &videoValueName, int channel)
{
    return QString::fromLatin1(videoValueName) + QString::number(channel);
}

QString lockName(Side side, Field field, int channel)
{
    return lockName(flowValueName(channelKey(Element::Video, side, field), 0), channel);
}

bool isLocked(const LockBook &book, const QString &name)
{
    return book.value(name, false);
}

bool isLocked(const LockBook &book, Side side, Field field, int channel)
{
    return isLocked(book, lockName(side, field, channel));
}

void setLocked(LockBook &book, Side side, Field field, int channel, bool locked)
{
    book[lockName(side, field, channel)] = locked;
}

void lockInterfaces(LockBook &book, int channels)
{
    for (int channel = 0; channel < channels; ++channel) {
        for (const FieldStep &step : lockedInterfaceOrder())
            setLocked(book, step.side, step.field, channel, true);
    }
}
