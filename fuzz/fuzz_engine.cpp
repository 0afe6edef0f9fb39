// SPDX-License-Identifier: MIT
// Any bytes as an engine's answer, and any text for one of its fields. Texts end within their arrays; what is
// put into a record is taken out of it again.
#include "app/view/enginerecords.h"
#include "require.h"

#include <cstring>

namespace {

bool same(const EngineSettings &a, const EngineSettings &b)
{
    return a.sourceAddress == b.sourceAddress && a.destinationAddress == b.destinationAddress &&
           a.interfaceAddress == b.interfaceAddress && a.sourcePort == b.sourcePort &&
           a.destinationPort == b.destinationPort && a.audioLayout == b.audioLayout && a.flags == b.flags;
}

void checkAnswer(const uint8_t *data, size_t size)
{
    MEDIACMD answer;
    memcpy(static_cast<void *>(&answer), data, qMin(size, sizeof answer));
    const EngineSettings settings = settingsOf(answer);
    require(settings.sourceAddress.size() <= 64 && settings.interfaceAddress.size() <= 64, "length");
    const quint32 channels = layoutChannels(settings.audioLayout);
    require(channels <= 0xffff && layoutFlows(settings.audioLayout) <= 0xffff, "layout");
    MEDIACMD record = engineRecord(MediaCode::ReceiveSettings, 1);
    putSettings(record, settings);
    MEDIACMD again = engineRecord(MediaCode::ReceiveSettings, 1);
    putSettings(again, settingsOf(record));
    require(same(settingsOf(record), settingsOf(again)), "settings change on their way");
}

void checkField(const QString &text)
{
    for (const Field field :
         {Field::SourcePort, Field::DestinationPort, Field::SourceAddress, Field::Interface}) {
        const QVector<MEDIACMD> records = fieldRecords(1, Side::Send, field, text);
        require(records.size() == kFlowCount + 2, "records");
        for (const MEDIACMD &record : records)
            require(record.text[sizeof record.text - 1] == 0, "text without an end");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    checkAnswer(data, size);
    checkField(QString::fromUtf8(reinterpret_cast<const char *>(data), int(size)));
    const quint32 layout = audioLayout(quint32(size % 9), quint32(size / 9 % 9));
    require(layoutChannels(layout) == 0 || layoutFlows(layout) == size % 9, "layout of a channel");
    return 0;
}
