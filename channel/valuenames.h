// SPDX-License-Identifier: MIT
//
// The names of the values in the configuration store that belong to no element, the key paths they stand
// under, and what some of the numbers mean. Names of an element's values are in channelkeys. No other
// place in the product spells a value name, apart from the settings file, whose format they are.
#ifndef CORVEL_VALUENAMES_H
#define CORVEL_VALUENAMES_H

#include <QtGlobal>

// Values that exist once per channel.
namespace ChannelValue {
constexpr char VideoType[] = "VideoType";                 // number: channel type
constexpr char SignalFormat[] = "SignalFormat";           // number: see videoformats.h
constexpr char ClockType[] = "ClockType";                 // number: ClockSource
constexpr char ClockDomain[] = "ClockDomain";             // number: PTP domain
constexpr char ClockGrandMaster[] = "ClockGrandMaster";   // text: grandmaster identity or MAC address
constexpr char AudioFlowType[] = "AudioFlowType";         // number: 0 single flow, 1 flows
constexpr char IpUseFileSettings[] = "IpUseFileSettings"; // number: 0 or 1
} // namespace ChannelValue

// Values of the whole machine that are kept with channel 0.
namespace FirstChannelValue {
constexpr char NmosDomain[] = "nmosdomain";         // text
constexpr char NmosIp[] = "nmosip";                 // text: the node's address
constexpr char NmosServerIp[] = "nmosserverip";     // text
constexpr char NmosServerPort[] = "nmosserverport"; // text
constexpr char LastConfigPath[] = "lastConfigPath"; // text: folder of the last file loaded
} // namespace FirstChannelValue

// Numbers of the whole machine, below a path of StorePath.
namespace MachineValue {
constexpr char ChannelCount[] = "MaxIntChannels"; // below Config
constexpr char NmosOverride[] = "nmosoverride";   // below AvHAL; 0 or 1. Channel 0 has a copy of its own.
constexpr char NmosUseLog[] = "NMOSUseLog";       // below Debug; 0 or 1
} // namespace MachineValue

// Key paths outside the channels. AvHAL and AvHal are one key, since the store compares paths without
// regard to case; which call uses which spelling is listed in docs/deliberate.md.
namespace StorePath {
constexpr char Config[] = "KWX\\Config";
constexpr char AvHAL[] = "KWX\\Advanced\\AvHAL";
constexpr char AvHal[] = "KWX\\Advanced\\AvHal";
constexpr char Debug[] = "KWX\\Advanced\\Debug";
} // namespace StorePath

// "VideoType". Types 1 and 8 carry several elements.
namespace ChannelType {
constexpr quint32 Smpte2110 = 1;
constexpr quint32 ClockDomainOwner = 8; // the one type whose "ClockDomain" also has an edit of its own
} // namespace ChannelType

// "ClockType", the item data of the clock source combo.
namespace ClockSource {
constexpr quint32 Internal = 0;
constexpr quint32 SoftwarePtp = 0x10000;
constexpr quint32 HardwarePtp = 0x20000;
constexpr quint32 FreeRun = 0x800000;
} // namespace ClockSource

// Audio channels per flow of a channel whose store says none.
constexpr quint32 kDefaultAudioChannels = 2;

// PTP domains run from 0 to this one (IEEE 1588).
constexpr quint32 kHighestPtpDomain = 127;

#endif
