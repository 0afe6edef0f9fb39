// SPDX-License-Identifier: MIT
//
// View: media commands, filled from what is shown.
#include "app/corvel.h"
#include "app/dialog/private.h"

#include <QComboBox>

MEDIACMD QCorvelPrivate::mediaCommand(quint32 code) const
{
    MEDIACMD command;
    command.code = code;
    command.channel = currentChannel();
    return command;
}

// A command about one side of the element that is shown.
MEDIACMD QCorvelPrivate::elementCommand(quint32 code, Side side) const
{
    MEDIACMD command = mediaCommand(code);
    quint32 receive = 0;
    quint32 transmit = 0;
    q->getRecSndTypes(&receive, &transmit);
    command.element = side == Side::Receive ? receive : transmit;
    command.flow = q->isAudio() ? engineFlow() : 0;
    return command;
}

quint32 QCorvelPrivate::audioLayout() const
{
    const quint32 channels = comboData(q->m_pComboAudChan);
    return (comboData(q->m_pComboAudFlow) * channels) << 16 | channels;
}
