// SPDX-License-Identifier: MIT
#include "files/fileload.h"

#include "channel/channelstore.h"
#include "channel/elementvalues.h"

#include <QSet>

#include <algorithm>

namespace {

// A description of a megabyte may name one value fifty thousand times. What is stored in the end is the same:
// one name has one lock and one box.
QVector<SdpStore> lastOfEachName(const SdpStores &values)
{
    QSet<QByteArray> seen;
    QVector<SdpStore> last;
    for (auto value = values.crbegin(); value != values.crend(); ++value) {
        if (seen.contains(value->valueName))
            continue;
        seen.insert(value->valueName);
        last.append(*value);
    }
    std::reverse(last.begin(), last.end());
    return last;
}

} // namespace

void storeSettingsValue(const SettingsValue &value)
{
    if (value.global)
        setGlobalDword(StorePath::AvHal, value.key.constData(), globalSettingsNumber(value.text));
    else
        setCfgValue(value.key.constData(), value.text, value.isString, value.channel);
}

SettingsLoadResult loadSettingsFile(const FileLines &lines, const SettingsLoad &load)
{
    SettingsReader reader;
    SettingsLoadResult result;
    SettingsValue value;
    QSet<int> channels;
    QByteArray line;
    int channel = -1;
    while (result.end == SettingsLoadEnd::EndOfFile && lines(line)) {
        const SettingsReader::Result kind = reader.feed(line, &value);
        if (kind == SettingsReader::Result::Stop)
            result.end = SettingsLoadEnd::SectionBelowTheFirst;
        if (kind != SettingsReader::Result::Value)
            continue;
        const bool isNew = value.channel != channel;
        channel = value.channel;
        if (isNew && load.betweenSections && !load.betweenSections(channel)) {
            result.end = SettingsLoadEnd::Stopped;
            continue;
        }
        load.store(value);
        channels.insert(channel);
        ++result.values;
    }
    result.channels = channels.size();
    result.leftOut = reader.leftOut();
    return result;
}

bool tickedField(SdpTick tick, Field *field)
{
    switch (tick) {
    case SdpTick::None:
        return false;
    case SdpTick::RecDstAddr:
        *field = Field::DestinationAddress;
        return true;
    case SdpTick::RecSrcAddr:
        *field = Field::SourceAddress;
        return true;
    case SdpTick::RecDstPort:
        *field = Field::DestinationPort;
        return true;
    }
    Q_UNREACHABLE();
}

DescriptionLoad storeSessionDescription(const SdpStores &values, const LockBook &book, int channel)
{
    DescriptionLoad load;
    Field field = Field::Flags;
    for (const SdpStore &value : lastOfEachName(values)) {
        if (isLocked(book, lockName(value.lockName, channel))) {
            ++load.locked;
            continue;
        }
        setCfgValue(value.valueName.constData(), value.text, value.isString, channel);
        ++load.stored;
        if (tickedField(value.box, &field))
            load.ticked |= flagBit(field);
    }
    if (load.ticked) {
        const quint32 flags = toDword(elementValue(Element::Video, Side::Receive, Field::Flags, channel));
        setElementValue(Element::Video, Side::Receive, Field::Flags, QString::number(flags | load.ticked),
                        channel);
    }
    return load;
}
