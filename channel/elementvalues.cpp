// SPDX-License-Identifier: MIT
#include "channel/elementvalues.h"

#include "channel/channelstore.h"

QString elementValue(Element element, Side side, Field field, int channel, const QByteArray &flowSuffix)
{
    const ChannelKey &key = channelKey(element, side, field);
    const bool isPort = field == Field::SourcePort || field == Field::DestinationPort;
    return cfgValue(valueName(key, flowSuffix).constData(), key.stored == Stored::Text, channel, isPort);
}

void setElementValue(Element element, Side side, Field field, const QString &text, int channel,
                     const QByteArray &flowSuffix)
{
    const ChannelKey &key = channelKey(element, side, field);
    setCfgValue(valueName(key, flowSuffix).constData(), text, key.stored == Stored::Text, channel);
}

void loadElementValues(ElementValues &values, Element element, int channel, const QByteArray &flowSuffix)
{
    for (const FieldStep &step : loadOrder(element)) {
        const QByteArray flow = step.field == Field::Flags ? QByteArrayLiteral("0") : flowSuffix;
        values.show(step.side, step.field, elementValue(element, step.side, step.field, channel, flow));
    }
}

void saveElementValues(const ElementValues &values, Element element, int channel,
                       const QByteArray &flowSuffix)
{
    for (const FieldStep &step : saveOrder(element)) {
        const QString text = values.value(step.side, step.field);
        setElementValue(element, step.side, step.field, text, channel, flowSuffix);
    }
}

void copyToAllElements(Side side, Field field, const QString &text, int channel)
{
    setElementValue(Element::Audio, side, field, text, channel, "0");
    for (int flow = 0; flow < kFlowCount; ++flow)
        setElementValue(Element::Audio, side, field, text, channel, QByteArray::number(flow));
    setElementValue(Element::Anc, side, field, text, channel);
    setElementValue(Element::Video, side, field, text, channel);
}

quint32 storedFlowCount(int channel)
{
    const auto number = [channel](Field field) {
        return toDword(elementValue(Element::Audio, Side::Receive, field, channel));
    };
    const quint32 total = number(Field::TotalChannels);
    const quint32 channels = number(Field::Channels);
    return total / (channels ? channels : kDefaultAudioChannels);
}
