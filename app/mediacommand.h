// SPDX-License-Identifier: MIT
//
// Media commands: how an embedded dialog talks to the recording engine of its host. The dialog fills a
// MEDIACMD and hands it to ipSetMode; the host's hook passes it on to the engine and, for a question,
// puts the answer into the same record. Without a hook nothing is sent and no question is answered; the
// dialog then shows the channel type "N/A". docs/embedding.md tells when which command comes.
#ifndef CORVEL_MEDIACOMMAND_H
#define CORVEL_MEDIACOMMAND_H

#include <QtGlobal>

#include <functional>

// MEDIACMD::code. Every command is for one channel; one with an element is for that element and side, and
// for one flow of audio.
namespace MediaCode {
constexpr quint32 ReloadMedia = 75100;      // tells: read the channel's media again
constexpr quint32 GetConfig = 75110;        // asks: type (0: the engine has none), clockSource, domain
constexpr quint32 GetSettings = 75111;      // asks: the settings of an element and side
constexpr quint32 ReceiveFinal = 75120;     // tells: like ReceiveSettings, and the dialog closes with "Done"
constexpr quint32 ReceiveSettings = 75121;  // tells: the settings of an element's receive side
constexpr quint32 TransmitSettings = 75122; // tells: the settings of an element's send side
constexpr quint32 SetType = 75123;          // tells: type; audioLayout as well when it was changed, else 0
constexpr quint32 SetClock = 75124;         // tells: clockSource, domain
constexpr quint32 SetField = 75125;         // tells: one locked field: field, and value or text
} // namespace MediaCode

// The second argument of ipSetMode.
namespace MediaMode {
constexpr int Tell = 0;
constexpr int Ask = 1;
} // namespace MediaMode

// One record serves every code; members a code does not name are zero. Numbers are in the machine's byte
// order, texts Latin-1 and terminated by a zero (an answer that fills an array to its end is accepted).
struct MEDIACMD {
    quint32 code = 0;    // MediaCode
    qint32 channel = 0;  // zero-based
    quint32 element = 0; // video, audio, ancillary data: 0x1000, 0x2000, 0x4000 receive;
                         // 0x10000, 0x20000, 0x40000 send
    qint32 flow = 0;     // of audio, 0 to 7; 0 for the other elements

    quint32 type = 0;        // channel type, 1: SMPTE ST 2110; all bits set: shown as "N/A"
    quint32 clockSource = 0; // 0 internal, 0x10000 software PTP, 0x20000 hardware PTP, 0x800000 free run
    quint32 domain = 0;      // PTP domain

    quint32 field = 0;  // SetField: 1 source port, 2 destination port, 4 source address,
                        // 8 destination address, 16 interface
    quint32 value = 0;  // SetField: the port
    char text[64] = {}; // SetField: the address

    // Settings of one side of an element.
    quint32 sourcePort = 0;
    quint32 destinationPort = 0;
    quint32 audioLayout = 0; // of the channel, with every element: audio channels of all flows << 16 |
                             // audio channels per flow
    char destinationAddress[64] = {};
    char sourceAddress[64] = {};
    char interfaceAddress[64] = {}; // of the local network interface
    quint32 flags = 0;              // which of the five are in use, bits as in field
};

// Hands one command to the host's hook. mode: MediaMode. Returns what the hook returned; 0 without a hook
// or without a command. The dialog does not look at the result. User interface thread; blocks for as long
// as the hook does.
int ipSetMode(MEDIACMD *command, int mode);

// Puts the host's hook in place of the one before; an empty function takes it out. There is one hook for
// the whole process. It is called on the user interface thread while the dialog is in the middle of a
// load or a save: it must not run an event loop nor touch the dialog, and should answer within
// milliseconds. The record belongs to the caller and is gone when the hook returns. The hook has to be in
// place before the dialog is made, which loads channel 0 at once, and until the dialog is destroyed.
using MediaHook = std::function<int(MEDIACMD *command, int mode)>;
void setMediaHook(MediaHook hook);

#endif
