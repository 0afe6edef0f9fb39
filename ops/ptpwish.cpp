// SPDX-License-Identifier: MIT
#include "ops/ptpwish.h"

#include "channel/valuenames.h"
#include "ops/legs.h"
#include "ops/place.h"

#include <algorithm>

namespace ops {

PtpTarget ptpTargetOf(const Snapshot &values, int channel)
{
    const QByteArray path = channelPath(channel);
    const Place video{channel, Element::Video, kNoFlow, {}};
    return {legOf(values, video, Side::Receive).interface, values.number(path, ChannelValue::ClockDomain),
            values.text(path, ChannelValue::ClockGrandMaster)};
}

std::optional<PtpTarget> firstPtpTarget(const Snapshot &values)
{
    int first = -1;
    for (const Row &row : values.rows()) {
        const quint32 clock = row.value.number;
        const bool ptp = clock == ClockSource::SoftwarePtp || clock == ClockSource::HardwarePtp;
        const int channel = ptp && row.name == ChannelValue::ClockType ? channelOfPath(row.path) : -1;
        if (channel >= 0)
            first = first < 0 ? channel : std::min(first, channel);
    }
    return first < 0 ? std::nullopt : std::optional<PtpTarget>(ptpTargetOf(values, first));
}

} // namespace ops
