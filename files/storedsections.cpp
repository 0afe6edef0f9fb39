// SPDX-License-Identifier: MIT
#include "files/storedsections.h"

#include "channel/channelstore.h"
#include "channel/storecalls.h"
#include "files/settingsfile.h"

#include <optional>

QByteArray StoredSections::section(int channel)
{
    std::optional<StoreTransaction> moment; // taken back at the end: nothing is written in it
    if (m_canBeHad)
        m_canBeHad = moment.emplace().isOpen();
    const auto value = [](const char *name, bool isString, int of) { return cfgValue(name, isString, of); };
    return settingsSection(value, channel, m_flows);
}
