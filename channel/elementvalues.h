// SPDX-License-Identifier: MIT
//
// An element's values between the store and whatever shows them: which are read and written, in which order
// and under which flow. Numbers travel as unsigned decimal text, see channelstore.h. Nothing here is made
// durable; that is the caller's commitStore.
#ifndef CORVEL_ELEMENTVALUES_H
#define CORVEL_ELEMENTVALUES_H

#include "channel/channelkeys.h"

#include <QByteArray>
#include <QString>

// What shows the values of one element. Both calls come once for each step of the element's order.
class ElementValues {
public:
    virtual ~ElementValues() = default;
    virtual void show(Side side, Field field, const QString &text) = 0;
    virtual QString value(Side side, Field field) const = 0;
};

// Reads the element of the channel in loadOrder and shows value by value. flowSuffix ("0" to "7", or empty)
// is the flow of the audio values but for the flags: those are read from flow 0 whatever flow is shown.
void loadElementValues(ElementValues &values, Element element, int channel, const QByteArray &flowSuffix);

// Writes the element of the channel in saveOrder, flags included, under the flow's names.
void saveElementValues(const ElementValues &values, Element element, int channel,
                       const QByteArray &flowSuffix);

// Writes one network field's text to all elements and flows of the channel: audio flow 0, then flows 0 to 7,
// ancillary data, video. Flow 0 is written twice.
void copyToAllElements(Side side, Field field, const QString &text, int channel);

// One field of one side of an element; Channels and the like for audio. flowSuffix as above.
QString elementValue(Element element, Side side, Field field, int channel, const QByteArray &flowSuffix = {});
void setElementValue(Element element, Side side, Field field, const QString &text, int channel,
                     const QByteArray &flowSuffix = {});

// The number of audio flows that the stored totals of the receive side stand for. A channel whose store
// names no channels per flow counts with kDefaultAudioChannels.
quint32 storedFlowCount(int channel);

#endif
